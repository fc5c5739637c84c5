// Pixel formats and their sizes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stage {

/// Pixel format codes of OpenGL, as the image services return them.
enum PictureFormat : int32_t {
    kPictureAlpha = 0x1906,
    kPictureRgb = 0x1907,
    kPictureRgba = 0x1908,
    kPictureLuminance = 0x1909,
    kPictureLuminanceAlpha = 0x190A,
};

/// format: a PictureFormat; any other code is treated as kPictureRgba.
constexpr int32_t bytes_per_pixel(int32_t format) {
    switch (format) {
        case kPictureAlpha:
        case kPictureLuminance:
            return 1;
        case kPictureLuminanceAlpha:
            return 2;
        case kPictureRgb:
            return 3;
        default:
            return 4;
    }
}

/// Bytes of a picture without padding. width, height: pixels, not negative.
constexpr size_t picture_byte_count(int32_t width, int32_t height, int32_t format) {
    return static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(bytes_per_pixel(format));
}

}  // namespace stage
