// Pixels in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "stage/scene/image.h"

namespace stage {

/// The longest side of a picture and of a frame, in pixels.
inline constexpr int32_t kMaxPictureSide = 16384;

/// OpenGL's pixel format codes, as the image services report them to plug-ins.
enum PictureFormat : int32_t {
    kPictureAlpha = 0x1906,
    kPictureRgb = 0x1907,
    kPictureRgba = 0x1908,
    kPictureLuminance = 0x1909,
    kPictureLuminanceAlpha = 0x190A,
};

/// Rows of width × bytes_per_pixel(format) bytes without padding, the bottom row first; alpha is straight.
struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    PictureFormat format = kPictureRgba;
    std::vector<uint8_t> bytes;
};

inline size_t picture_byte_count(int32_t width, int32_t height, PictureFormat format) {
    return static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(bytes_per_pixel(format));
}

}  // namespace stage
