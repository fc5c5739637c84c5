// Clears and reads the frame of a program's own window.
#pragma once

#include <array>
#include <cstdint>

#include "stage/assets/picture.h"
#include "stage/stage_export.h"

namespace stage {

/// Sets the viewport to the window, width × height pixels, and fills it with a colour: red, green, blue, 0…1 each.
STAGE_EXPORT void clear_window(int32_t width, int32_t height, const std::array<float, 3>& color);

/// The pixels of the window's back buffer as RGB.
STAGE_EXPORT Picture read_window(int32_t width, int32_t height);

}  // namespace stage
