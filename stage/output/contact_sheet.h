// Contact sheets: small pictures in a grid.
#pragma once

#include <cstdint>

#include "stage/assets/picture.h"
#include "stage/stage_export.h"

namespace stage {

/// An empty sheet for pictures of `picture_width` × `picture_height` pixels. It is about as wide as one picture; its
/// `columns` × `rows` cells have the proportions of the pictures and at least one pixel.
STAGE_EXPORT DeepPicture make_sheet(int32_t columns, int32_t rows, int32_t picture_width, int32_t picture_height);

/// Draws `picture` into a cell, counted from 0 in reading order. Each pixel is the mean of the picture's pixels that it
/// covers, colours weighted by alpha.
STAGE_EXPORT void place_in_sheet(DeepPicture& sheet, int32_t columns, int32_t rows, int32_t cell,
                                 const DeepPicture& picture);

/// The picture with 8 bits per channel, rounded to nearest.
STAGE_EXPORT Picture to_bytes(const DeepPicture& picture);

}  // namespace stage
