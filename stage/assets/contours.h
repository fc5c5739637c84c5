// Closed contours of fonts and pictures: converts curves to chords and groups outer contours with their holes.
#pragma once

#include <vector>

#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

struct ContourPoint {
    double x;
    double y;
};

/// Corners of a closed line; the last one is joined to the first.
using Contour = std::vector<ContourPoint>;

/// Which points are inside: those with an odd winding number (kEvenOdd), or with one other than 0 (kNonZero).
enum class FillRule { kEvenOdd, kNonZero };

/// Appends the curve from the contour's last point to `end`, as at most 1000 chords. They stay within `tolerance`
/// (above 0, in the contour's units) of the curve, unless that takes more chords. The contour must not be empty.
/// Source: the error of linear interpolation is at most h²/8 times the largest second derivative (C. de Boor, "A
/// Practical Guide to Splines", 1978, chapter II); the control points give a bound of that derivative.
STAGE_EXPORT void append_quadratic(Contour& contour, ContourPoint control, ContourPoint end, double tolerance);
STAGE_EXPORT void append_cubic(Contour& contour, ContourPoint control_1, ContourPoint control_2, ContourPoint end,
                               double tolerance);

/// The area that the contours enclose under `rule`: one mesh for each connected part, with its holes connected by
/// bridge_holes, in the x-y plane (z 0), sorted by left edge, then by lower edge. Overlaps and self-intersections are
/// resolved, so that the even-odd rule applies to each mesh on its own. Corners are rounded to 2^-29 of the largest
/// coordinate, then to float. Contours of fewer than 3 points or without area are ignored. If a coordinate is not
/// finite, the result is empty.
STAGE_EXPORT std::vector<Mesh> outlines_of(const std::vector<Contour>& contours, FillRule rule);

}  // namespace stage
