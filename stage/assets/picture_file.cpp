#include "picture_file.h"

#include <fmt/format.h>
#include <stb/stb_image.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

namespace stage {
namespace {

/// Bytes for the decoder. It replaces missing bytes by zeros and reports no error, so `ended_early` records the fault.
/// The first read of the decoder is into its small buffer, later ones into that buffer or into pixel rows. A short read
/// into the buffer is normal, since the decoder requests more than it needs there.
struct Source {
    std::span<const uint8_t> bytes;
    size_t position = 0;
    const char* buffer = nullptr;
    bool ended_early = false;
};

int read_source(void* user, char* data, int size) {
    Source& source = *static_cast<Source*>(user);
    if (source.buffer == nullptr) source.buffer = data;
    const size_t left = source.bytes.size() - source.position;
    const size_t count = std::min(left, static_cast<size_t>(size));
    if (count == 0 || (data != source.buffer && count < static_cast<size_t>(size))) source.ended_early = true;
    std::memcpy(data, source.bytes.data() + source.position, count);
    source.position += count;
    return static_cast<int>(count);
}

void skip_source(void* user, int count) {
    Source& source = *static_cast<Source*>(user);
    const auto target = static_cast<int64_t>(source.position) + count;
    source.position = static_cast<size_t>(std::clamp<int64_t>(target, 0, static_cast<int64_t>(source.bytes.size())));
}

int is_source_at_end(void* user) {
    const Source& source = *static_cast<Source*>(user);
    return source.position == source.bytes.size();
}

constexpr stbi_io_callbacks kCallbacks = {read_source, skip_source, is_source_at_end};

/// The same callbacks on an open file, to read the header only.
int read_stream(void* user, char* data, int size) {
    std::ifstream& file = *static_cast<std::ifstream*>(user);
    file.read(data, size);
    return static_cast<int>(file.gcount());
}

void skip_stream(void* user, int count) {
    std::ifstream& file = *static_cast<std::ifstream*>(user);
    file.clear();
    file.seekg(count, std::ios::cur);
}

int is_stream_at_end(void* user) {
    return static_cast<std::ifstream*>(user)->peek() == std::ifstream::traits_type::eof();
}

constexpr stbi_io_callbacks kStreamCallbacks = {read_stream, skip_stream, is_stream_at_end};

/// known: the decoder recognised the format.
Result<Done> check_header(const std::string& name, bool known, int width, int height) {
    if (!known) return Error{name + ": not a PNG, JPEG, TGA or BMP picture"};
    if (width >= 1 && height >= 1 && width <= kMaxPictureSide && height <= kMaxPictureSide) return Done{};
    return Error{fmt::format("{}: {} x {} pixels; each side must be 1 to {}", name, width, height, kMaxPictureSide)};
}

Result<std::ifstream> open_picture(const std::filesystem::path& path) {
    if (std::error_code code; std::filesystem::is_directory(path, code))
        return Error{path.string() + ": a folder, not a picture file"};
    std::ifstream file(path, std::ios::binary);
    if (!file) return Error{fmt::format("{}: cannot be read: {}", path.string(), std::strerror(errno))};
    return file;
}

struct FreePixels {
    void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

PictureFormat format_of_channels(int channels) {
    switch (channels) {
        case 1:
            return kPictureLuminance;
        case 2:
            return kPictureLuminanceAlpha;
        case 3:
            return kPictureRgb;
        default:
            return kPictureRgba;
    }
}

/// The decoder gives the top row first.
Picture bottom_row_first(const stbi_uc* pixels, int width, int height, int channels) {
    Picture picture{width, height, format_of_channels(channels), {}};
    const size_t row_bytes = static_cast<size_t>(width) * static_cast<size_t>(channels);
    picture.bytes.resize(row_bytes * static_cast<size_t>(height));
    for (size_t row = 0; row < static_cast<size_t>(height); ++row)
        std::memcpy(&picture.bytes[row * row_bytes], pixels + (static_cast<size_t>(height) - 1 - row) * row_bytes,
                    row_bytes);
    return picture;
}

}  // namespace

Result<Picture> decode_picture(std::span<const uint8_t> bytes, const std::string& name) {
    Source source{bytes};
    int width = 0;
    int height = 0;
    int channels = 0;
    const bool known = stbi_info_from_callbacks(&kCallbacks, &source, &width, &height, &channels) != 0;
    if (const Result<Done> checked = check_header(name, known, width, height); !checked) return checked.error();

    source = Source{bytes};
    const std::unique_ptr<stbi_uc, FreePixels> pixels(
        stbi_load_from_callbacks(&kCallbacks, &source, &width, &height, &channels, 0));
    if (source.ended_early) return Error{name + ": the picture's data ends too early; the file is truncated"};
    if (pixels == nullptr) return Error{fmt::format("{}: the picture is damaged ({})", name, stbi_failure_reason())};
    return bottom_row_first(pixels.get(), width, height, channels);
}

Result<Picture> read_picture(const std::filesystem::path& path) {
    Result<std::ifstream> file = open_picture(path);
    if (!file) return file.error();
    const std::string text{std::istreambuf_iterator<char>(*file), std::istreambuf_iterator<char>()};
    if (file->bad()) return Error{fmt::format("{}: cannot be read: {}", path.string(), std::strerror(errno))};
    return decode_picture({reinterpret_cast<const uint8_t*>(text.data()), text.size()}, path.string());
}

Result<std::array<int32_t, 2>> read_picture_size(const std::filesystem::path& path) {
    Result<std::ifstream> file = open_picture(path);
    if (!file) return file.error();
    int width = 0;
    int height = 0;
    int channels = 0;
    const bool known = stbi_info_from_callbacks(&kStreamCallbacks, &*file, &width, &height, &channels) != 0;
    if (const Result<Done> checked = check_header(path.string(), known, width, height); !checked)
        return checked.error();
    return std::array<int32_t, 2>{width, height};
}

}  // namespace stage
