#include "contact_sheet.h"

#include <algorithm>
#include <array>

namespace stage {
namespace {

/// The range of picture pixels along one axis that a pixel of the cell covers.
struct Span {
    int32_t begin;
    int32_t end;  // one past the last
};

Span covered(int32_t pixel, int32_t cell_side, int32_t picture_side) {
    const auto at = [&](int64_t edge) { return static_cast<int32_t>(edge * picture_side / cell_side); };
    return {at(pixel), std::max(at(pixel + 1), at(pixel) + 1)};
}

std::array<uint16_t, 4> mean(const DeepPicture& picture, Span columns, Span rows) {
    std::array<uint64_t, 3> colors{};  // × alpha
    uint64_t alphas = 0;
    for (int32_t y = rows.begin; y < rows.end; ++y)
        for (int32_t x = columns.begin; x < columns.end; ++x) {
            const uint16_t* pixel =
                &picture
                     .channels[(static_cast<size_t>(y) * static_cast<size_t>(picture.width) + static_cast<size_t>(x)) *
                               4];
            for (size_t i = 0; i < 3; ++i) colors[i] += uint64_t{pixel[i]} * pixel[3];
            alphas += pixel[3];
        }
    if (alphas == 0) return {};
    const auto count =
        static_cast<uint64_t>(columns.end - columns.begin) * static_cast<uint64_t>(rows.end - rows.begin);
    const auto divided = [](uint64_t sum, uint64_t by) { return static_cast<uint16_t>((sum + by / 2) / by); };
    return {divided(colors[0], alphas), divided(colors[1], alphas), divided(colors[2], alphas), divided(alphas, count)};
}

}  // namespace

DeepPicture make_sheet(int32_t columns, int32_t rows, int32_t picture_width, int32_t picture_height) {
    const int32_t cell_width = std::max(picture_width / columns, 1);
    const int32_t cell_height = std::max(picture_height * cell_width / picture_width, 1);
    DeepPicture sheet{cell_width * columns, cell_height * rows, {}};
    sheet.channels.resize(static_cast<size_t>(sheet.width) * static_cast<size_t>(sheet.height) * 4);
    return sheet;
}

void place_in_sheet(DeepPicture& sheet, int32_t columns, int32_t rows, int32_t cell, const DeepPicture& picture) {
    const int32_t width = sheet.width / columns;
    const int32_t height = sheet.height / rows;
    const int32_t left = cell % columns * width;
    const int32_t bottom = (rows - 1 - cell / columns) * height;  // row 0 of the pixels is at the bottom
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const auto pixel = mean(picture, covered(x, width, picture.width), covered(y, height, picture.height));
            std::ranges::copy(pixel,
                              &sheet.channels[(static_cast<size_t>(bottom + y) * static_cast<size_t>(sheet.width) +
                                               static_cast<size_t>(left + x)) *
                                              4]);
        }
}

Picture to_bytes(const DeepPicture& picture) {
    Picture bytes{picture.width, picture.height, kPictureRgba, {}};
    bytes.bytes.reserve(picture.channels.size());
    for (const uint16_t value : picture.channels) bytes.bytes.push_back(static_cast<uint8_t>((value + 128) / 257));
    return bytes;
}

}  // namespace stage
