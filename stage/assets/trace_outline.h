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
    int width = 0;   // pixels, 1 to 16384
    int height = 0;  // as width
    std::vector<uint8_t> bytes;
    uint8_t threshold = 128;  // from here on a pixel belongs to the shape; 1 takes all but black, 0 takes everything
};

struct TraceSettings {
    float width = 100.0f;       // units that the picture's width becomes, above 0
    float height = 100.0f;      // and its height
    float tolerance = 0.0f;     // units that a chord may leave its curve by; 0 is a tenth of a pixel
    int smallest_spot = 2;      // pixels: areas and holes of at most so many are noise; 0 keeps all
    double corner_limit = 1.0;  // 0 keeps every corner of the pixels sharp, 1.34 rounds nearly all
};

/// The outlines of the mask's shape in the x-y plane (z 0), the picture's rectangle centred on the origin: a mesh for
/// every connected area, islands in holes included, with its holes bridged in; sorted by left edge, then by lower edge.
/// They keep within about a pixel of the pixels' borders.
/// Source of the tracing: P. Selinger, "Potrace: a polygon-based tracing algorithm" (2003), through its library.
/// Errors, which name the setting and what would be right: sizes out of range, a number of bytes other than
/// width × height, no pixel in the shape.
STAGE_EXPORT Result<std::vector<Mesh>> trace_outlines(const Mask& mask, const TraceSettings& settings);

}  // namespace stage
