#include "png_file.h"

#include <fmt/format.h>
#include <png.h>

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

/// PNG stores the top row first.
std::vector<png_bytep> row_pointers(const Picture& picture) {
    const size_t row_bytes = picture_byte_count(picture.width, 1, picture.format);
    std::vector<png_bytep> rows;
    for (int32_t row = picture.height; row-- > 0;)
        rows.push_back(const_cast<png_bytep>(picture.bytes.data()) + static_cast<size_t>(row) * row_bytes);
    return rows;
}

/// False when libpng failed. No local may have a destructor: longjmp skips it.
bool write_with_jumps(PngWriter& writer, std::FILE* file, const Picture& picture, std::vector<png_bytep>& rows) {
    if (setjmp(png_jmpbuf(writer.png))) return false;
    png_init_io(writer.png, file);
    // Fast settings: slower ones hardly make pictures of smoke smaller.
    png_set_compression_level(writer.png, 3);
    png_set_filter(writer.png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height), 8, png_color_type(picture.format), PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_rows(writer.png, writer.info, rows.data());
    png_write_png(writer.png, writer.info, PNG_TRANSFORM_IDENTITY, nullptr);
    return true;
}

}  // namespace

Result<Done> write_png(const std::filesystem::path& path, const Picture& picture) {
    if (picture.width < 1 || picture.height < 1 ||
        picture.bytes.size() < picture_byte_count(picture.width, picture.height, picture.format))
        return Error{fmt::format("{}: a picture of {} x {} pixels with {} bytes cannot be written", path.string(),
                                 picture.width, picture.height, picture.bytes.size())};
    const auto failed = [&](const std::string& reason) {
        discard_partial(path);
        return Error{fmt::format("{}: cannot be written: {}", path.string(), reason)};
    };
    File file(std::fopen(begin_partial(path).c_str(), "wb"));
    if (file == nullptr) return failed(std::strerror(errno));
    {
        PngWriter writer;
        std::vector<png_bytep> rows = row_pointers(picture);
        if (!write_with_jumps(writer, file.get(), picture, rows)) return failed(writer.message);
    }
    if (std::fclose(file.release()) != 0) return failed(std::strerror(errno));
    return publish_partial(path);
}

}  // namespace stage
