// The area that outlines enclose, cut into pieces from which points can be drawn directly: for shapes so thin that
// candidates from their box would rarely be accepted.
#pragma once

#include <cstdint>

#include "../memory/buffer.h"
#include "container_source.h"
#include "plane_point.h"

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

struct SweepEdge;
struct SweepCrossing;
struct SweepOutline;

/// The pieces, and the scratch memory of the plane sweep that cuts them.
struct OutlineArea {
    Buffer<AreaPiece> pieces;
    int32_t count = 0;  // pieces in use
    double total = 0;   // area of all pieces

    Buffer<SweepEdge> edges;
    Buffer<int32_t> edge_lists;
    Buffer<SweepCrossing> crossings;
    Buffer<SweepOutline> outlines;
};

/// Cuts the area into trapezoids between neighbouring edges by a plane sweep that reports crossings (Bentley and
/// Ottmann, "Algorithms for Reporting and Counting Geometric Intersections", IEEE Transactions on Computers 1979). The
/// pieces are the enclosed area up to rounding. Where edges cross very often the rest is covered by a few boxes, so a
/// drawn point still has to be tested. Returns false where there is no area or no memory.
bool build_area(OutlineArea& area, const ContainerSpawnSource& source);

/// A point of the reference plane, uniform over the pieces. Draws six random values.
PlanePoint draw_from_area(const OutlineArea& area);

}  // namespace tovu
