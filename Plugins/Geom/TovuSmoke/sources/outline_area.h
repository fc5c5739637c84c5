// The area that outlines enclose, cut into pieces, to draw points from directly. Used for shapes so thin that random
// points of their bounding box would rarely be accepted.
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
    double area_before;  // sum over the pieces before this one
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
/// pieces cover the enclosed area exactly, up to rounding. If edges cross very often, boxes cover the remaining part,
/// so a drawn point still has to be tested. Returns false if there is no area or no memory.
bool build_area(OutlineArea& area, const ContainerSpawnSource& source);

/// A point of the reference plane, uniform over the pieces. Draws six random values.
PlanePoint draw_from_area(const OutlineArea& area);

}  // namespace tovu
