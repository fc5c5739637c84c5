// The lit pixels of a mask (first channel above 0), to draw points from directly. Used for masks so dark that random
// points of their rectangle would rarely be accepted.
#pragma once

#include "../memory/buffer.h"
#include "image_source.h"
#include "plane_point.h"

namespace tovu {

/// The accumulated lit area by rows, in pixels. The last column and the last row extend beyond the rectangle by another
/// width and height of it, as spawn points are drawn from twice the rectangle.
struct MaskArea {
    Buffer<double> area_through;  // entry r: area of rows 0 to r
    int32_t row_count = 0;        // rows within the host's data
    double total = 0;
};

/// Counts the lit pixels. Returns false if there is none or no memory.
bool build_area(MaskArea& area, const ImageReader& mask);

/// A position whose pixel is lit, uniform over all such positions. Draws six random values.
PlanePoint draw_from_area(const MaskArea& area, const ImageReader& mask);

}  // namespace tovu
