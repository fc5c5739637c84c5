// An image that covers a rectangle of the particles' x-y plane: a mask for births, or a wind map.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tovu {

/// A host image and the rectangle that it covers. Owns nothing. Order and types of the fields are fixed.
struct ImageSource {
    int32_t image = -1;
    float rect_min_x = 0;  // at the first column
    float rect_min_y = 0;  // at the first row
    float rect_max_x = 0;
    float rect_max_y = 0;
    int32_t width = 0;  // pixels, as of `load`
    int32_t height = 0;
    int32_t bytes_per_pixel = 0;
    int32_t inversion_flag = 2;  // inverse of `spawn_image_bool`; not read
};

/// Smallest extent of an image's rectangle, or of the bounding box of outlines, that gives births.
constexpr float kMinExtent = 0.01f;

/// Stores the handle, valid or not, and reads the image's size and format. Later samples map positions by them.
void load(ImageSource& source, int32_t image_handle);

void set_inversion_flag(ImageSource& source, int32_t flag);
void set_rect(ImageSource& source, float min_x, float min_y, float max_x, float max_y);

/// Whether the host still knows the image.
bool is_valid(const ImageSource& source);

/// Whether the rectangle is at least kMinExtent wide and high. An extent of NaN passes.
bool is_usable(const ImageSource& source);

/// Access to the image's current pixels. Valid until the step ends or another plug-in is called, since either may let
/// the host replace the pixels.
/// Positions are mapped by the size as of `load`; the current size and format only bound the reads. Pixels that the
/// current image does not have read as 0.
struct ImageReader {
    ImageSource source;
    const uint8_t* pixels;  // null: no image, all pixels read as 0
    uint64_t byte_count;
};
ImageReader open_image(const ImageSource& source);

/// Index of the column or row at a position, clamped to 0 … count − 1: positions outside the rectangle read its nearest
/// edge. 0 if the rectangle has no extent.
inline int32_t pixel_index(float position, float rect_min, float rect_max, int32_t count) {
    const float index = (position - rect_min) * static_cast<float>(count) / (rect_max - rect_min);
    if (!(index > 0.0f && index < 2147483648.0f)) return 0;
    const auto whole = static_cast<int32_t>(index);
    return whole < count ? whole : count > 0 ? count - 1 : 0;
}

/// Byte offset of the pixel at (x, y).
inline uint64_t pixel_offset(const ImageSource& s, float x, float y) {
    const auto column = static_cast<uint64_t>(pixel_index(x, s.rect_min_x, s.rect_max_x, s.width));
    const auto row = static_cast<uint64_t>(pixel_index(y, s.rect_min_y, s.rect_max_y, s.height));
    const auto width = static_cast<uint64_t>(s.width > 0 ? s.width : 0);
    return (row * width + column) * static_cast<uint64_t>(s.bytes_per_pixel);
}

/// A byte of the pixel data; 0 past its end.
inline uint8_t byte_at(const ImageReader& reader, uint64_t offset) {
    return offset < reader.byte_count ? reader.pixels[offset] : uint8_t{0};
}

/// First channel of the pixel at (x, y), 0 to 1.
inline float sample1(const ImageReader& reader, float x, float y) {
    return static_cast<float>(byte_at(reader, pixel_offset(reader.source, x, y)) / 255.0);
}

/// The three bytes from the start of a pixel. In formats with fewer bytes per pixel they continue into the next pixel.
struct PixelBytes {
    uint8_t channel[3];
};
inline PixelBytes pixel_bytes(const ImageReader& reader, uint64_t offset) {
    if (offset + 2 < reader.byte_count)
        return {{reader.pixels[offset], reader.pixels[offset + 1], reader.pixels[offset + 2]}};
    return {{byte_at(reader, offset), byte_at(reader, offset + 1), byte_at(reader, offset + 2)}};
}

/// The bytes of the pixel at (x, y).
inline PixelBytes sample3(const ImageReader& reader, float x, float y) {
    return pixel_bytes(reader, pixel_offset(reader.source, x, y));
}

/// Computes `pixel_offset` for `count` positions and prefetches the pixels.
/// xy: x and y of each position. xy and offsets have room for an even number of positions.
void find_pixels(const ImageReader& reader, const float* xy, int32_t count, uint64_t* offsets);

}  // namespace tovu
