#include "mask_area.h"

#include <algorithm>

#include "../math/random.h"

namespace tovu {
namespace {

/// One row of the mask, limited to the host's data.
struct MaskRow {
    const uint8_t* pixels;
    int32_t inner_count;  // pixels before the last column
    bool last_lit;
};

MaskRow row_at(const ImageReader& mask, int32_t row) {
    const auto bytes = static_cast<uint64_t>(mask.source.bytes_per_pixel);
    const auto width = static_cast<uint64_t>(mask.source.width);
    const uint64_t start = static_cast<uint64_t>(row) * width * bytes;
    const uint64_t present = (mask.byte_count - start + bytes - 1) / bytes;  // pixels whose first byte is in the data
    const uint64_t inner = std::min(present, width - 1);
    return {mask.pixels + start, static_cast<int32_t>(inner), byte_at(mask, start + (width - 1) * bytes) != 0};
}

// The common formats have their own loops, which the compiler vectorises.
int32_t count_lit(const uint8_t* pixels, int32_t count, int32_t bytes_per_pixel) {
    int32_t lit = 0;
    if (bytes_per_pixel == 1) {
        for (int32_t i = 0; i < count; ++i) lit += pixels[i] != 0;
    } else if (bytes_per_pixel == 4) {
        for (int32_t i = 0; i < count; ++i) lit += pixels[4 * static_cast<size_t>(i)] != 0;
    } else {
        const auto step = static_cast<size_t>(bytes_per_pixel);
        for (size_t i = 0; i < static_cast<size_t>(count); ++i) lit += pixels[i * step] != 0;
    }
    return lit;
}

double width_of(const MaskRow& row, const ImageReader& mask) {
    const int32_t lit = count_lit(row.pixels, row.inner_count, mask.source.bytes_per_pixel);
    return lit + (row.last_lit ? 1.0 + mask.source.width : 0.0);
}

double height_of(int32_t row, const ImageReader& mask) {
    return row == mask.source.height - 1 ? 1.0 + mask.source.height : 1.0;
}

// The column of the lit pixel with this rank, counting from 0 and leaving out the last column.
int32_t lit_column(const MaskRow& row, int32_t bytes_per_pixel, int32_t rank) {
    const auto step = static_cast<size_t>(bytes_per_pixel);
    for (int32_t column = 0; column < row.inner_count; ++column)
        if (row.pixels[static_cast<size_t>(column) * step] != 0 && rank-- == 0) return column;
    return row.inner_count;
}

float position_at(double pixel, float rect_min, float rect_max, int32_t count) {
    const double extent = static_cast<double>(rect_max) - static_cast<double>(rect_min);
    return static_cast<float>(static_cast<double>(rect_min) + pixel * extent / count);
}

// The number of rows with at least one pixel in the host's data.
int32_t rows_present(const ImageReader& mask) {
    const ImageSource& s = mask.source;
    if (mask.pixels == nullptr || s.height <= 0 || s.width <= 0) return 0;
    const uint64_t row_bytes = static_cast<uint64_t>(s.width) * static_cast<uint64_t>(s.bytes_per_pixel);
    const uint64_t begun = (mask.byte_count + row_bytes - 1) / row_bytes;
    return static_cast<int32_t>(std::min(begun, static_cast<uint64_t>(s.height)));
}

}  // namespace

bool build_area(MaskArea& area, const ImageReader& mask) {
    area.row_count = 0;
    area.total = 0;
    const int32_t rows = rows_present(mask);
    if (rows == 0 || !area.area_through.reserve(rows)) return false;
    area.row_count = rows;
    for (int32_t row = 0; row < rows; ++row) {
        area.total += width_of(row_at(mask, row), mask) * height_of(row, mask);
        area.area_through[row] = area.total;
    }
    return area.total > 0.0;
}

PlanePoint draw_from_area(const MaskArea& area, const ImageReader& mask) {
    const ImageSource& s = mask.source;
    const double chosen = random_fraction() * area.total;
    const double* const first = area.area_through.data();
    const double* const end = first + area.row_count;
    const double* at = std::upper_bound(first, end, chosen);
    if (at == end) --at;
    const auto row_index = static_cast<int32_t>(at - first);
    const MaskRow row = row_at(mask, row_index);
    const int32_t lit = count_lit(row.pixels, row.inner_count, s.bytes_per_pixel);
    const double y = row_index + random_fraction() * height_of(row_index, mask);
    const double along = random_fraction() * (lit + (row.last_lit ? 1.0 + s.width : 0.0));
    const auto rank = static_cast<int32_t>(along);
    const double x =
        along < lit ? lit_column(row, s.bytes_per_pixel, rank) + (along - rank) : s.width - 1 + (along - lit);
    return {position_at(x, s.rect_min_x, s.rect_max_x, s.width), position_at(y, s.rect_min_y, s.rect_max_y, s.height)};
}

}  // namespace tovu
