// Outlines traced from a picture.
#pragma once

#include <cstdint>
#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

/// One byte for each pixel; rows without padding, the bottom row first.
struct Mask {
    int32_t width = 0;           // pixels, 1 to kMaxPictureSide
    int32_t height = 0;          // as width
    std::vector<uint8_t> bytes;  // width × height
    uint8_t threshold = 128;     // pixels of at least this value belong to the shape
};

/// The outlines of the mask's shape in the x-y plane (z 0). The picture is centred on the origin and scaled to width ×
/// height units (above 0). Each connected area, also one inside a hole, is one mesh with its holes connected by
/// bridge_holes. Meshes are sorted by left edge, then by lower edge. Outlines stay within about a pixel of the pixels'
/// borders. Areas and holes of one or two pixels are dropped as noise.
/// Source of the tracing: P. Selinger, "Potrace: a polygon-based tracing algorithm" (2003), through its library.
/// Error: no pixel reaches the threshold, or only areas of one or two pixels do.
STAGE_EXPORT Result<std::vector<Mesh>> trace_outlines(const Mask& mask, float width, float height);

}  // namespace stage
