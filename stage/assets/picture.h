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

/// RGBA with 16 bits per channel: rows of width × 4 numbers, the bottom row first; alpha is straight.
struct DeepPicture {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint16_t> channels;
};

/// A frame as it was drawn: RGBA as 16-bit floats, the bottom row first. Red, green and blue are colour × coverage and,
/// where light was added, may be greater than alpha, which is the coverage.
struct DrawnPicture {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint16_t> halves;  // bits of IEEE 754 binary16
};

}  // namespace stage
