// Images: handle by name, size, format, pixels.
#include <tovu/host_services.h>

#include "serve.h"

namespace stage {
namespace {

int32_t named_image(const Service& service, const char* name) {
    return find_image_by_name(service.stage, text_of(name));
}

void size(const Service& service, int32_t handle, int32_t* width, int32_t* height) {
    const Image* image = service.image(handle);
    if (!image) return;
    service.put(width, image->width);
    service.put(height, image->height);
}

void format(const Service& service, int32_t handle, int32_t* out) {
    if (const Image* image = service.image(handle)) service.put(out, image->format);
}

void data(const Service& service, int32_t handle, uint8_t** pixels) {
    if (!service.image(handle)) return;
    Image* image = find_image(service.stage, handle);
    service.put(pixels, image->pixels.empty() ? nullptr : image->pixels.data());
}

}  // namespace
}  // namespace stage

using namespace stage;

int32_t _api__get_image_objectid(const char* name) {
    return serve<kNoObject>(__func__, &Overrides::get_image_objectid, named_image, name);
}

void _api__get_image_size(int32_t image, int32_t* width, int32_t* height) {
    serve(__func__, &Overrides::get_image_size, size, image, width, height);
}

void _api__get_image_format(int32_t image, int32_t* out) {
    serve(__func__, &Overrides::get_image_format, format, image, out);
}

void _api__get_image_data(int32_t image, uint8_t** pixels) {
    serve(__func__, &Overrides::get_image_data, data, image, pixels);
}
