#include "jpeg_file.h"

#include <fmt/format.h>
#include <stb/stb_image_write.h>

#include <string>

#include "whole_file.h"

namespace stage {

Result<Done> write_jpeg(const std::filesystem::path& path, const Picture& picture, int quality) {
    const auto append = [](void* context, void* data, int size) {
        static_cast<std::string*>(context)->append(static_cast<const char*>(data), static_cast<size_t>(size));
    };
    // JPEG stores the top row first.
    const size_t row_bytes = picture_byte_count(picture.width, 1, picture.format);
    std::vector<uint8_t> rows;
    for (size_t row = static_cast<size_t>(picture.height); row-- > 0;) {
        const auto first = picture.bytes.begin() + static_cast<std::ptrdiff_t>(row * row_bytes);
        rows.insert(rows.end(), first, first + static_cast<std::ptrdiff_t>(row_bytes));
    }
    std::string bytes;
    if (stbi_write_jpg_to_func(append, &bytes, picture.width, picture.height, bytes_per_pixel(picture.format),
                               rows.data(), quality) == 0)
        return Error{fmt::format("{}: a picture of {} x {} pixels cannot be written as JPEG", path.string(),
                                 picture.width, picture.height)};
    return write_whole_file(path, bytes);
}

}  // namespace stage
