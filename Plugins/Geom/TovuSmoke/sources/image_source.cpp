#include "image_source.h"

#include "../host/host_services.h"
#include "../host/opengl.h"
#include "../math/float4.h"

namespace tovu {
namespace {

int32_t bytes_per_pixel(int32_t format) {
    switch (format) {
        case GL_ALPHA:
        case GL_LUMINANCE:
            return 1;
        case GL_LUMINANCE_ALPHA:
            return 2;
        case GL_RGB:
            return 3;
        default:
            return 4;
    }
}

struct ImageShape {
    int32_t width = 0;
    int32_t height = 0;
    int32_t bytes_per_pixel = 0;
};

ImageShape shape_of(int32_t image_handle) {
    ImageShape shape;
    int32_t format = 0;
    _api__get_image_size(image_handle, &shape.width, &shape.height);
    _api__get_image_format(image_handle, &format);
    shape.bytes_per_pixel = bytes_per_pixel(format);
    return shape;
}

/// `pixel_index` of two positions: column, row, column, row.
struct PairMapping {
    Float4 low;     // first column, first row
    Float4 count;   // columns, rows
    Float4 extent;  // of the rectangle
    Int4 last;

    explicit PairMapping(const ImageSource& s)
        : low{s.rect_min_x, s.rect_min_y, s.rect_min_x, s.rect_min_y},
          extent{Float4{s.rect_max_x, s.rect_max_y, s.rect_max_x, s.rect_max_y} - low} {
        const auto columns = static_cast<float>(s.width);
        const auto rows = static_cast<float>(s.height);
        count = Float4{columns, rows, columns, rows};
        const int32_t last_column = s.width > 0 ? s.width - 1 : 0;
        const int32_t last_row = s.height > 0 ? s.height - 1 : 0;
        last = Int4{last_column, last_row, last_column, last_row};
    }
    Int4 operator()(Float4 positions) const {
        const Float4 index = (positions - low) * count / extent;
        const Int4 in_range = (index > broadcast(0.0f)) & (index < broadcast(2147483648.0f));
        const Int4 whole = __builtin_convertvector(masked(index, in_range), Int4);
        const Int4 within = whole < last;
        return (whole & within) | (last & ~within);
    }
};

uint64_t byte_count(const ImageShape& shape) {
    if (shape.width <= 0 || shape.height <= 0) return 0;
    return static_cast<uint64_t>(shape.width) * static_cast<uint64_t>(shape.height) *
           static_cast<uint64_t>(shape.bytes_per_pixel);
}

}  // namespace

void load(ImageSource& source, int32_t image_handle) {
    source.image = image_handle;
    const ImageShape shape = shape_of(image_handle);
    source.width = shape.width;
    source.height = shape.height;
    source.bytes_per_pixel = shape.bytes_per_pixel;
}

void set_inversion_flag(ImageSource& source, int32_t flag) {
    source.inversion_flag = flag;
}

void set_rect(ImageSource& source, float min_x, float min_y, float max_x, float max_y) {
    source.rect_min_x = min_x;
    source.rect_min_y = min_y;
    source.rect_max_x = max_x;
    source.rect_max_y = max_y;
}

bool is_valid(const ImageSource& source) {
    return _api__object_valid(source.image) != 0;
}

bool is_usable(const ImageSource& source) {
    return !(source.rect_max_x - source.rect_min_x < kMinExtent) &&
           !(source.rect_max_y - source.rect_min_y < kMinExtent);
}

ImageReader open_image(const ImageSource& source) {
    ImageReader reader{source, nullptr, 0};
    if (!is_valid(source)) return reader;
    uint8_t* pixels = nullptr;
    _api__get_image_data(source.image, &pixels);
    reader.pixels = pixels;
    if (pixels != nullptr) reader.byte_count = byte_count(shape_of(source.image));
    return reader;
}

void find_pixels(const ImageReader& reader, const float* xy, int32_t count, uint64_t* offsets) {
    const PairMapping mapping(reader.source);
    const auto width = static_cast<uint64_t>(reader.source.width > 0 ? reader.source.width : 0);
    const auto bytes = static_cast<uint64_t>(reader.source.bytes_per_pixel);
    const uint8_t* const pixels = reader.pixels;
    const uint64_t byte_count = reader.byte_count;
    for (int32_t i = 0; i < count; i += 2) {
        uint64_t places[2];  // row in the high half, column in the low half
        store(places, mapping(load_float4(xy + 2 * i)));
        for (int32_t k = 0; k < 2; ++k) {
            const uint64_t offset = ((places[k] >> 32) * width + (places[k] & 0xFFFFFFFFu)) * bytes;
            offsets[i + k] = offset;
            if (offset < byte_count) __builtin_prefetch(pixels + offset);
        }
    }
}

}  // namespace tovu
