#include "stage/output/png_file.h"

#include <fmt/format.h>
#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "stage/output/whole_file.h"

namespace stage {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// libpng reports errors by jumping; what it said is kept here.
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

struct PngReader {
    std::string message;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, keep_message, ignore_warning);
    png_infop info = png_create_info_struct(png);
    PngReader() = default;
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
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

std::vector<png_text> text_entries(const PngTexts& texts) {
    std::vector<png_text> entries;
    for (const auto& [keyword, text] : texts) {
        png_text entry{};
        entry.compression = PNG_TEXT_COMPRESSION_NONE;
        entry.key = const_cast<char*>(keyword.c_str());  // libpng only reads it
        entry.text = const_cast<char*>(text.c_str());
        entries.push_back(entry);
    }
    return entries;
}

/// The top row first, as PNG has it.
std::vector<png_bytep> row_pointers(const Picture& picture) {
    const size_t row_bytes = picture_byte_count(picture.width, 1, picture.format);
    std::vector<png_bytep> rows;
    for (int32_t row = picture.height; row-- > 0;)
        rows.push_back(const_cast<png_bytep>(picture.bytes.data()) + static_cast<size_t>(row) * row_bytes);
    return rows;
}

/// False when libpng failed. Nothing with a destructor lives in here: the jump would pass it over.
bool write_with_jumps(PngWriter& writer, std::FILE* file, const Picture& picture, std::vector<png_text>& texts,
                      std::vector<png_bytep>& rows) {
    if (setjmp(png_jmpbuf(writer.png))) return false;
    png_init_io(writer.png, file);
    // Fast settings; pictures of smoke are hardly smaller with slower ones.
    png_set_compression_level(writer.png, 3);
    png_set_filter(writer.png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height), 8, png_color_type(picture.format), PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!texts.empty()) png_set_text(writer.png, writer.info, texts.data(), static_cast<int>(texts.size()));
    png_set_rows(writer.png, writer.info, rows.data());
    png_write_png(writer.png, writer.info, PNG_TRANSFORM_IDENTITY, nullptr);
    return true;
}

bool read_with_jumps(PngReader& reader, std::FILE* file) {
    if (setjmp(png_jmpbuf(reader.png))) return false;
    png_init_io(reader.png, file);
    png_read_png(reader.png, reader.info, PNG_TRANSFORM_IDENTITY, nullptr);  // texts may stand behind the pixels
    return true;
}

}  // namespace

Result<Done> write_png(const std::filesystem::path& path, const Picture& picture, const PngTexts& texts) {
    if (picture.width < 1 || picture.height < 1 ||
        picture.bytes.size() < picture_byte_count(picture.width, picture.height, picture.format))
        return Error{fmt::format("{}: a picture of {} x {} pixels with {} bytes can't be written", path.string(),
                                 picture.width, picture.height, picture.bytes.size())};
    const auto failed = [&](const std::string& reason) {
        discard_partial(path);
        return Error{fmt::format("{}: can't be written: {}", path.string(), reason)};
    };
    File file(std::fopen(begin_partial(path).c_str(), "wb"));
    if (file == nullptr) return failed(std::strerror(errno));
    {
        PngWriter writer;
        std::vector<png_text> entries = text_entries(texts);
        std::vector<png_bytep> rows = row_pointers(picture);
        if (!write_with_jumps(writer, file.get(), picture, entries, rows)) return failed(writer.message);
    }
    if (std::fclose(file.release()) != 0) return failed(std::strerror(errno));
    return publish_partial(path);
}

Result<PngTexts> read_png_texts(const std::filesystem::path& path) {
    const File file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr) return Error{fmt::format("{}: can't be read: {}", path.string(), std::strerror(errno))};
    PngReader reader;
    if (!read_with_jumps(reader, file.get()))
        return Error{fmt::format("{}: can't be read as PNG: {}", path.string(), reader.message)};
    png_textp entries = nullptr;
    int count = 0;
    png_get_text(reader.png, reader.info, &entries, &count);
    PngTexts texts;
    for (int i = 0; i < count; ++i) texts.emplace_back(entries[i].key, entries[i].text);
    return texts;
}

}  // namespace stage
