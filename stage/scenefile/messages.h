// What is said about a scene or a look, a line each: "file:line:column: …".
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"

namespace stage {

struct Messages {
    std::vector<std::string> errors;
    std::vector<std::string> warnings;  // of what can be rendered, but hardly as intended
};

/// The first of equal lines, in their order: a value is looked at once for each layer and time that it holds for.
std::vector<std::string> without_repeats(std::vector<std::string> lines);

/// All lines in one error, without repeats.
Error error_of(const std::vector<std::string>& lines);

}  // namespace stage
