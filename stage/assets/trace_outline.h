// Outlines traced from a picture.
#pragma once

#include <cstdint>
#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

/// One byte for each pixel, rows without padding, the first row the bottom of the picture, as plug-ins see images.
struct Mask {
    int32_t width = 0;           // pixels, 1 to kMaxPictureSide
    int32_t height = 0;          // as width
    std::vector<uint8_t> bytes;  // width × height
    uint8_t threshold = 128;     // a pixel of at least this belongs to the shape
};

/// The outlines of the mask's shape in the x-y plane (z 0), the picture centred on the origin and scaled to width ×
/// height units (above 0): a mesh for every connected area, islands in holes included, with its holes bridged in;
/// sorted by left edge, then by lower edge. They stay within about a pixel of the pixels' borders. Areas and holes of
/// one or two pixels are noise and left out.
/// Source of the tracing: P. Selinger, "Potrace: a polygon-based tracing algorithm" (2003), through its library.
/// Error: no pixel reaches the threshold, or nothing but noise does.
STAGE_EXPORT Result<std::vector<Mesh>> trace_outlines(const Mask& mask, float width, float height);

}  // namespace stage
