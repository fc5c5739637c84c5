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
    void operator()(void* pixels) const { stbi_image_free(pixels); }
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
template <class Channel>
std::vector<Channel> bottom_row_first(const Channel* pixels, int width, int height, int channels) {
    const size_t row = static_cast<size_t>(width) * static_cast<size_t>(channels);
    const auto rows = static_cast<size_t>(height);
    std::vector<Channel> turned(row * rows);
    for (size_t y = 0; y < rows; ++y)
        std::memcpy(&turned[y * row], pixels + (rows - 1 - y) * row, row * sizeof(Channel));
    return turned;
}

template <class Channel>
struct Decoded {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<Channel> numbers;  // the bottom row first
};

/// load: stbi_load_from_callbacks or stbi_load_16_from_callbacks. wanted_channels: 0 for those of the file.
template <class Channel>
Result<Decoded<Channel>> decode(std::span<const uint8_t> bytes, const std::string& name,
                                Channel* (*load)(const stbi_io_callbacks*, void*, int*, int*, int*, int),
                                int wanted_channels) {
    Source source{bytes};
    Decoded<Channel> decoded;
    const bool known =
        stbi_info_from_callbacks(&kCallbacks, &source, &decoded.width, &decoded.height, &decoded.channels) != 0;
    if (const Result<Done> checked = check_header(name, known, decoded.width, decoded.height); !checked)
        return checked.error();

    source = Source{bytes};
    const std::unique_ptr<Channel, FreePixels> pixels(
        load(&kCallbacks, &source, &decoded.width, &decoded.height, &decoded.channels, wanted_channels));
    if (source.ended_early) return Error{name + ": the picture's data ends too early; the file is truncated"};
    if (pixels == nullptr) return Error{fmt::format("{}: the picture is damaged ({})", name, stbi_failure_reason())};
    if (wanted_channels != 0) decoded.channels = wanted_channels;
    decoded.numbers = bottom_row_first(pixels.get(), decoded.width, decoded.height, decoded.channels);
    return decoded;
}

Result<std::string> read_bytes(const std::filesystem::path& path) {
    Result<std::ifstream> file = open_picture(path);
    if (!file) return file.error();
    std::string bytes{std::istreambuf_iterator<char>(*file), std::istreambuf_iterator<char>()};
    if (file->bad()) return Error{fmt::format("{}: cannot be read: {}", path.string(), std::strerror(errno))};
    return bytes;
}

std::span<const uint8_t> as_numbers(const std::string& bytes) {
    return {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()};
}

}  // namespace

Result<Picture> decode_picture(std::span<const uint8_t> bytes, const std::string& name) {
    Result<Decoded<uint8_t>> decoded = decode<uint8_t>(bytes, name, stbi_load_from_callbacks, 0);
    if (!decoded) return decoded.error();
    return Picture{decoded->width, decoded->height, format_of_channels(decoded->channels), std::move(decoded->numbers)};
}

Result<Picture> read_picture(const std::filesystem::path& path) {
    const Result<std::string> bytes = read_bytes(path);
    return bytes ? decode_picture(as_numbers(*bytes), path.string()) : bytes.error();
}

Result<DeepPicture> read_deep_picture(const std::filesystem::path& path) {
    const Result<std::string> bytes = read_bytes(path);
    if (!bytes) return bytes.error();
    Result<Decoded<uint16_t>> decoded =
        decode<uint16_t>(as_numbers(*bytes), path.string(), stbi_load_16_from_callbacks, STBI_rgb_alpha);
    if (!decoded) return decoded.error();
    return DeepPicture{decoded->width, decoded->height, std::move(decoded->numbers)};
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
