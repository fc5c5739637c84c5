// OpenGL's error flags as texts. Internal to the library.
#pragma once

#include <string>
#include <vector>

namespace stage {

/// Reads and clears all error flags of the current context. Not between glBegin and glEnd.
std::vector<std::string> take_opengl_errors();

}  // namespace stage
