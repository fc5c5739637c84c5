#include "image_source.h"

#include "../host/host_services.h"
#include "../host/opengl.h"

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
    return !(source.rect_max_x - source.rect_min_x < kLeastExtent) &&
           !(source.rect_max_y - source.rect_min_y < kLeastExtent);
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

}  // namespace tovu
