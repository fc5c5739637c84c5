// An image laid over a rectangle of the particles' x-y plane: a mask for births, or a map of the wind.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tovu {

/// A host image and the rectangle it covers. Owns nothing. Order and types are fixed.
struct ImageSource {
    int32_t image = -1;
    float rect_min_x = 0;  // first column
    float rect_min_y = 0;  // first row
    float rect_max_x = 0;
    float rect_max_y = 0;
    int32_t width = 0;  // pixels, as the host reported them at load
    int32_t height = 0;
    int32_t bytes_per_pixel = 0;
    int32_t inversion_flag = 2;  // the opposite of `spawn_image_bool`; read by nothing
};

/// An extent below this, of an image's rectangle or of an outline's box, gives no births.
constexpr float kLeastExtent = 0.01f;

/// Stores the handle, valid or not, and reads the image's size and format, by which positions are mapped from now on.
void load(ImageSource& source, int32_t image_handle);

void set_inversion_flag(ImageSource& source, int32_t flag);
void set_rect(ImageSource& source, float min_x, float min_y, float max_x, float max_y);

/// Whether the host still knows the image.
bool is_valid(const ImageSource& source);

/// Whether the rectangle is at least kLeastExtent wide and high; an extent that is not a number passes.
bool is_usable(const ImageSource& source);

/// The pixels that the host gives at this moment, for particles one after the other: never kept beyond a request to
/// another plug-in, which may make the host load the image anew, nor beyond the step.
/// The size and the format of the moment only bound the reads, so that an image that shrank since it was loaded reads
/// as 0 where it ends.
struct ImageReader {
    ImageSource source;
    const uint8_t* pixels;  // null: no image, everything reads as 0
    uint64_t byte_count;
};
ImageReader open_image(const ImageSource& source);

/// Index of the column or row under a position: held to 0 … count − 1, so that positions beyond the rectangle read the
/// nearest edge; 0 where the rectangle has no extent.
inline int32_t pixel_index(float position, float rect_min, float rect_max, int32_t count) {
    const float index = (position - rect_min) * static_cast<float>(count) / (rect_max - rect_min);
    if (!(index > 0.0f && index < 2147483648.0f)) return 0;
    const auto whole = static_cast<int32_t>(index);
    return whole < count ? whole : count > 0 ? count - 1 : 0;
}

/// Where the pixel under (x, y) begins in the pixel data.
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

/// First channel of the pixel under (x, y), 0 to 1.
inline float sample1(const ImageReader& reader, float x, float y) {
    return static_cast<float>(byte_at(reader, pixel_offset(reader.source, x, y)) / 255.0);
}

/// A pixel as bytes: its first three, which in formats of fewer run into the next pixel.
struct PixelBytes {
    uint8_t channel[3];
};
inline PixelBytes pixel_bytes(const ImageReader& reader, uint64_t offset) {
    if (offset + 2 < reader.byte_count)
        return {{reader.pixels[offset], reader.pixels[offset + 1], reader.pixels[offset + 2]}};
    return {{byte_at(reader, offset), byte_at(reader, offset + 1), byte_at(reader, offset + 2)}};
}

/// The pixel under (x, y) as bytes.
inline PixelBytes sample3(const ImageReader& reader, float x, float y) {
    return pixel_bytes(reader, pixel_offset(reader.source, x, y));
}

/// `pixel_offset` of `count` positions x, y at once; asks for the pixels, which will be read soon.
/// xy, offsets: room for an even number of positions.
void find_pixels(const ImageReader& reader, const float* xy, int32_t count, uint64_t* offsets);

}  // namespace tovu
