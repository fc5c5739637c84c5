// Closed contours of fonts and pictures: flattens their curves and separates outer contours from holes.
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

/// The area that contours enclose together: where the winding number is odd, or where it is not 0.
enum class FillRule { kEvenOdd, kNonZero };

/// Appends the curve that starts at the contour's last point, its end included, as chords that stay within `tolerance`
/// (above 0, in the contour's units) of it; at most 1000 chords.
/// Source: the error of linear interpolation, at most h²/8 times the largest second derivative (C. de Boor, "A
/// Practical Guide to Splines", 1978, chapter II), with that derivative's bound from the control points. The contour
/// must hold a point.
STAGE_EXPORT void append_quadratic(Contour& contour, ContourPoint control, ContourPoint end, double tolerance);
STAGE_EXPORT void append_cubic(Contour& contour, ContourPoint control_1, ContourPoint control_2, ContourPoint end,
                               double tolerance);

/// The area that the contours enclose, as one mesh for each of its connected parts with the part's holes bridged in, in
/// the x-y plane (z 0), sorted by left edge, then by lower edge. Overlapping and self-crossing contours are resolved
/// first, so that the even-odd rule on the meshes one by one gives what `rule` gives on the contours together. Corners
/// keep their place up to a 2^-29th of the largest coordinate (2^30 steps across) and float rounding. Contours of fewer
/// than 3 points, or that enclose nothing, add nothing. A coordinate that is not finite gives no mesh.
STAGE_EXPORT std::vector<Mesh> outlines_of(const std::vector<Contour>& contours, FillRule rule);

}  // namespace stage
