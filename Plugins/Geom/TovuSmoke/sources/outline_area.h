// The area that outlines enclose, cut into slices from which points can be drawn directly: for shapes so thin that
// candidates from their box would rarely be accepted.
#pragma once

#include <cstdint>

#include "container_source.h"

namespace tovu {

/// A trapezoid between two values of the second coordinate.
struct AreaPiece {
    float low;  // second coordinate
    float high;
    float left_at_low;  // first coordinate
    float right_at_low;
    float left_at_high;
    float right_at_high;
    double area_before;  // of all pieces in front of this one
};

/// Pieces that hardly overlap and cover every enclosed point. Where edges cross inside a slice the piece is the slice's
/// box, so a drawn point still has to be tested. Owns the array.
struct OutlineArea {
    AreaPiece* pieces = nullptr;
    int32_t count = 0;
    double total = 0;
};

/// Works the area out: between one vertex's second coordinate and the next, the spans between edges. Outlines with very
/// many edges side by side become one piece, their box. Returns false where there is no area or no memory.
bool build_area(OutlineArea& area, const ContainerSpawnSource& source);

/// A point of the reference plane, uniform over the pieces. Draws six random values.
struct PlanePoint {
    float across;
    float along;
};
PlanePoint draw_from_area(const OutlineArea& area);

void release(OutlineArea& area);

}  // namespace tovu
