// Messages about a scene or a look, a line "file:line:column: …" each.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"

namespace stage {

struct Messages {
    std::vector<std::string> errors;
    std::vector<std::string> warnings;  // about values that can be rendered but are probably mistakes
};

/// Removes repeated lines. A value is checked for each layer and time that it applies to, which repeats its messages.
std::vector<std::string> without_repeats(std::vector<std::string> lines);

/// All lines in one error, without repeats.
Error error_of(const std::vector<std::string>& lines);

}  // namespace stage
