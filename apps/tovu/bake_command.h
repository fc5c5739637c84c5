// `tovu bake`: a Python script that makes wind images, and titles that erode into smoke.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

/// Replaces this process by the script looks/make/bake.py, run by Debian's Python, which has the packages that it
/// needs. arguments: passed to the script. Returns only if the script cannot be started.
stage::Error run_bake_script(std::vector<std::string> arguments);

}  // namespace tovu
