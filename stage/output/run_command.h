// Runs a command to its end.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// arguments[0] is the command, looked up in PATH. Returns its standard output and standard error together, without the
/// final newline. Error: there is no such command, or its exit status is not 0; the message quotes its last lines.
STAGE_EXPORT Result<std::string> run_command(const std::vector<std::string>& arguments);

}  // namespace stage
