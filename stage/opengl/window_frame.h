// What a program with a window of its own needs of OpenGL: its frame.
#pragma once

#include <array>
#include <cstdint>

#include "context.h"
#include "stage/assets/picture.h"
#include "stage/stage_export.h"

namespace stage {

/// Of the context that is current.
STAGE_EXPORT OpenGlDescription current_opengl_description();

/// Sets the viewport to the window, width × height pixels, and fills it with a colour: red, green, blue, 0…1 each.
STAGE_EXPORT void clear_window(int32_t width, int32_t height, const std::array<float, 3>& color);

/// The window's pixels as RGB, of the frame that is drawn and not shown yet.
STAGE_EXPORT Picture read_window(int32_t width, int32_t height);

}  // namespace stage
