#include "image.h"

#include <fmt/format.h>

#include <algorithm>

#include "stage.h"

namespace stage {
namespace {

Result<Done> check_size(const std::string& name, int32_t width, int32_t height, int32_t format, size_t bytes) {
    if (width < 1 || height < 1)
        return Error{fmt::format("image '{}': {} x {} pixels; both must be at least 1", name, width, height)};
    const size_t wanted = picture_byte_count(width, height, format);
    if (bytes != wanted)
        return Error{fmt::format("image '{}': {} x {} pixels of {} bytes need {} bytes, but {} were given", name, width,
                                 height, bytes_per_pixel(format), wanted, bytes)};
    return Done{};
}

}  // namespace

Result<int32_t> add_image(Stage& stage, std::string name, int32_t width, int32_t height, int32_t format,
                          std::vector<uint8_t> pixels) {
    if (find_image_by_name(stage, name) != kNoObject)
        return Error{fmt::format("image '{}': there is an image of this name already", name)};
    if (const auto checked = check_size(name, width, height, format, pixels.size()); !checked) return checked.error();
    const int32_t handle = new_handle(stage, ObjectKind::kImage);
    if (handle == kNoObject) return Error{fmt::format("image '{}': all object numbers are used", name)};
    stage.images[handle] = Image{handle, std::move(name), width, height, format, std::move(pixels), 1};
    return handle;
}

Result<Done> replace_image(Stage& stage, int32_t image_handle, int32_t width, int32_t height, int32_t format,
                           std::vector<uint8_t> pixels) {
    Image* image = find_image(stage, image_handle);
    if (!image) return Error{fmt::format("{} is not the handle of an image", image_handle)};
    if (const auto checked = check_size(image->name, width, height, format, pixels.size()); !checked)
        return checked.error();
    image->width = width;
    image->height = height;
    image->format = format;
    image->pixels = std::move(pixels);
    ++image->revision;
    return Done{};
}

bool remove_image(Stage& stage, int32_t image_handle) {
    return stage.images.erase(image_handle) == 1;
}

const Image* find_image(const Stage& stage, int32_t image_handle) {
    const auto found = stage.images.find(image_handle);
    return found == stage.images.end() ? nullptr : &found->second;
}

Image* find_image(Stage& stage, int32_t image_handle) {
    return const_cast<Image*>(find_image(std::as_const(stage), image_handle));
}

int32_t find_image_by_name(const Stage& stage, std::string_view name) {
    const auto found = std::find_if(stage.images.begin(), stage.images.end(),
                                    [&](const auto& entry) { return entry.second.name == name; });
    return found == stage.images.end() ? kNoObject : found->first;
}

}  // namespace stage
