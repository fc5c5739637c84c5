// Pixels in memory.
#pragma once

#include <cstdint>
#include <vector>

#include "stage/scene/pixel_format.h"

namespace stage {

/// The longest side of a picture and of a frame, in pixels.
inline constexpr int32_t kMaxPictureSide = 16384;

/// Rows of width × bytes_per_pixel(format) bytes without padding, the bottom row first; alpha is straight.
struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    PictureFormat format = kPictureRgba;
    std::vector<uint8_t> bytes;
};

}  // namespace stage
