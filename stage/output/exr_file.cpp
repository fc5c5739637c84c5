#include "exr_file.h"

#include <OpenEXR/ImfChromaticitiesAttribute.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfRgbaFile.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfStdIO.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <fmt/format.h>

#include <exception>
#include <vector>

#include "whole_file.h"

namespace stage {
namespace {

static_assert(sizeof(Imf::Rgba) == 4 * sizeof(uint16_t));

/// OpenEXR stores the top row first.
std::vector<Imf::Rgba> top_row_first(const DrawnPicture& picture) {
    const auto width = static_cast<size_t>(picture.width);
    const auto height = static_cast<size_t>(picture.height);
    std::vector<Imf::Rgba> pixels(width * height);
    for (size_t y = 0; y < height; ++y) {
        const uint16_t* half = &picture.halves[(height - 1 - y) * width * 4];
        for (Imf::Rgba* pixel = &pixels[y * width]; pixel != &pixels[y * width] + width; ++pixel, half += 4) {
            pixel->r.setBits(half[0]);
            pixel->g.setBits(half[1]);
            pixel->b.setBits(half[2]);
            pixel->a.setBits(half[3]);
        }
    }
    return pixels;
}

/// Encodes into memory, since OpenEXR's file writer ignores errors on closing. Throws OpenEXR's exceptions.
std::string encode(const DrawnPicture& picture, const PictureTexts& texts) {
    Imf::Header header(picture.width, picture.height);
    header.compression() = Imf::ZIP_COMPRESSION;
    Imf::addChromaticities(header, Imf::Chromaticities());  // the default is BT.709
    for (const auto& [keyword, text] : texts) header.insert(keyword, Imf::StringAttribute(text));
    Imf::StdOSStream stream;
    {
        const std::vector<Imf::Rgba> pixels = top_row_first(picture);
        Imf::RgbaOutputFile file(stream, header, Imf::WRITE_RGBA);
        file.setFrameBuffer(pixels.data(), 1, static_cast<size_t>(picture.width));
        file.writePixels(picture.height);
    }
    return stream.str();
}

}  // namespace

Result<Done> write_exr(const std::filesystem::path& path, const DrawnPicture& picture, const PictureTexts& texts) {
    try {
        return write_whole_file(path, encode(picture, texts));
    } catch (const std::exception& error) {
        return Error{fmt::format("{}: cannot be written: {}", path.string(), error.what())};
    }
}

bool is_whole_exr(const std::filesystem::path& path) {
    try {
        Imf::RgbaInputFile file(path.c_str());
        const Imath::Box2i window = file.dataWindow();
        const int width = window.max.x - window.min.x + 1;
        std::vector<Imf::Rgba> row(static_cast<size_t>(width));
        file.setFrameBuffer(row.data() - window.min.x, 1, 0);
        file.readPixels(window.min.y, window.max.y);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace stage
