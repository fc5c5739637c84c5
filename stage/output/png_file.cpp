#include "png_file.h"

#include <fmt/format.h>
#include <png.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "whole_file.h"

namespace stage {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// libpng reports errors with longjmp; its message is stored first.
void keep_message(png_structp png, png_const_charp message) {
    *static_cast<std::string*>(png_get_error_ptr(png)) = message;
    png_longjmp(png, 1);
}

void ignore_warning(png_structp, png_const_charp) {}

struct PngWriter {
    std::string message;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &message, keep_message, ignore_warning);
    png_infop info = png_create_info_struct(png);
    PngWriter() = default;
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter() { png_destroy_write_struct(&png, &info); }
};

int png_color_type(PictureFormat format) {
    switch (format) {
        case kPictureAlpha:
        case kPictureLuminance:
            return PNG_COLOR_TYPE_GRAY;
        case kPictureLuminanceAlpha:
            return PNG_COLOR_TYPE_GRAY_ALPHA;
        case kPictureRgb:
            return PNG_COLOR_TYPE_RGB;
        case kPictureRgba:
            break;
    }
    return PNG_COLOR_TYPE_RGB_ALPHA;
}

/// A picture in the form that libpng needs.
struct Pixels {
    int32_t width;
    int32_t height;
    int bits;        // per channel
    int color_type;  // PNG_COLOR_TYPE_…
    const void* data;
    size_t row_bytes;
};

/// PNG stores the top row first.
std::vector<png_bytep> row_pointers(const Pixels& pixels) {
    auto* const bytes = static_cast<png_bytep>(const_cast<void*>(pixels.data));
    std::vector<png_bytep> rows;
    for (int32_t row = pixels.height; row-- > 0;) rows.push_back(bytes + static_cast<size_t>(row) * pixels.row_bytes);
    return rows;
}

/// Few programs read international text chunks, so that they are used only for texts outside of ASCII.
std::vector<png_text> png_texts(const PictureTexts& texts) {
    std::vector<png_text> result;
    for (const auto& [keyword, text] : texts) {
        png_text one{};
        const bool plain = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
        one.compression = plain ? PNG_TEXT_COMPRESSION_NONE : PNG_ITXT_COMPRESSION_NONE;
        one.key = const_cast<char*>(keyword.c_str());
        one.text = const_cast<char*>(text.c_str());
        (plain ? one.text_length : one.itxt_length) = text.size();
        result.push_back(one);
    }
    return result;
}

/// PNG stores the upper byte of a number first.
constexpr int kTransforms =
    std::endian::native == std::endian::little ? PNG_TRANSFORM_SWAP_ENDIAN : PNG_TRANSFORM_IDENTITY;

/// False if libpng fails. No local variable may have a destructor, since longjmp skips it.
bool write_with_jumps(PngWriter& writer, std::FILE* file, const Pixels& pixels, std::vector<png_bytep>& rows,
                      const std::vector<png_text>& texts) {
    if (setjmp(png_jmpbuf(writer.png))) return false;
    png_init_io(writer.png, file);
    // Fast compression: slower settings hardly reduce the size of smoke pictures.
    png_set_compression_level(writer.png, 3);
    png_set_filter(writer.png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(pixels.width),
                 static_cast<png_uint_32>(pixels.height), pixels.bits, pixels.color_type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_text(writer.png, writer.info, texts.data(), static_cast<int>(texts.size()));
    png_set_rows(writer.png, writer.info, rows.data());
    png_write_png(writer.png, writer.info, kTransforms, nullptr);
    return true;
}

Result<Done> write_pixels(const std::filesystem::path& path, const Pixels& pixels, const PictureTexts& texts) {
    const auto failed = [&](const std::string& reason) {
        discard_partial(path);
        return Error{fmt::format("{}: cannot be written: {}", path.string(), reason)};
    };
    File file(std::fopen(begin_partial(path).c_str(), "wb"));
    if (file == nullptr) return failed(std::strerror(errno));
    {
        PngWriter writer;
        std::vector<png_bytep> rows = row_pointers(pixels);
        errno = 0;
        if (!write_with_jumps(writer, file.get(), pixels, rows, png_texts(texts)))
            return failed(errno != 0 ? std::strerror(errno) : writer.message);
    }
    if (std::fclose(file.release()) != 0) return failed(std::strerror(errno));
    return publish_partial(path);
}

Error no_picture(const std::filesystem::path& path, int32_t width, int32_t height, size_t bytes) {
    return {fmt::format("{}: a picture of {} x {} pixels with {} bytes cannot be written", path.string(), width, height,
                        bytes)};
}

}  // namespace

Result<Done> write_png(const std::filesystem::path& path, const Picture& picture, const PictureTexts& texts) {
    const auto& [width, height, format, bytes] = picture;
    if (width < 1 || height < 1 || bytes.size() < picture_byte_count(width, height, format))
        return no_picture(path, width, height, bytes.size());
    return write_pixels(
        path, {width, height, 8, png_color_type(format), bytes.data(), picture_byte_count(width, 1, format)}, texts);
}

Result<Done> write_png(const std::filesystem::path& path, const DeepPicture& picture, const PictureTexts& texts) {
    const auto& [width, height, channels] = picture;
    const size_t row_bytes = static_cast<size_t>(width) * 4 * sizeof(uint16_t);
    const size_t byte_count = channels.size() * sizeof(uint16_t);
    if (width < 1 || height < 1 || byte_count < row_bytes * static_cast<size_t>(height))
        return no_picture(path, width, height, byte_count);
    return write_pixels(path, {width, height, 16, PNG_COLOR_TYPE_RGB_ALPHA, channels.data(), row_bytes}, texts);
}

}  // namespace stage
