// The lit pixels of a mask, from which points can be drawn directly: for masks so dark that candidates from their
// rectangle would rarely be accepted.
#pragma once

#include "../memory/buffer.h"
#include "image_source.h"
#include "plane_point.h"

namespace tovu {

/// How much of the mask lies in each row, in pixels, the bands beyond the maximum edges included: there the last column
/// and the last row go on for another width and height of the rectangle.
struct MaskArea {
    Buffer<double> area_through;  // entry r: of rows 0 to r
    int32_t row_count = 0;        // that the host's data reach
    double total = 0;
};

/// Counts the lit pixels. Returns false where there is none, or no memory.
bool build_area(MaskArea& area, const ImageReader& mask);

/// A position whose pixel is lit, uniform over all such positions. Draws six random values.
PlanePoint draw_from_area(const MaskArea& area, const ImageReader& mask);

}  // namespace tovu
