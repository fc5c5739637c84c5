// Built-in shapes: outlines in the x-y plane (z 0), counter-clockwise, centred on the origin unless said otherwise.
#pragma once

#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

// Lengths are units of the geometry's own coordinates, finite and above 0; counts are held to 100000. Outside that the
// result is an error that names the shape, the parameter, its value and what would be right. Each gives a single mesh.

/// Starts at the lower left corner.
STAGE_EXPORT Result<std::vector<Mesh>> make_rectangle(float width, float height);

/// `segments` (3 or more) corners on the ellipse, the first at its rightmost point.
STAGE_EXPORT Result<std::vector<Mesh>> make_ellipse(float width, float height, int segments);

/// 3 or more corners with finite coordinates, kept as they come, z and winding included.
STAGE_EXPORT Result<std::vector<Mesh>> make_polygon(std::vector<Vector3> corners);

/// A star of `points` (2 or more) tips, the first straight up, with an inner corner after each.
STAGE_EXPORT Result<std::vector<Mesh>> make_star(int points, float outer_radius, float inner_radius);

/// The area between two circles of `segments` (3 or more) corners each, joined by a cut; inner_radius < outer_radius.
STAGE_EXPORT Result<std::vector<Mesh>> make_ring(float outer_radius, float inner_radius, int segments);

/// A band of constant radial width `thickness` along an Archimedean spiral, whose radius grows evenly from inner_radius
/// (0 allowed) at angle 0 to outer_radius after `turns` turns counter-clockwise. `segments` (3 or more) steps per turn.
/// Neighbouring turns must not touch: thickness < (outer_radius − inner_radius) / turns where there is more than one
/// turn, and thickness ≤ 2 × inner_radius, so that the band stays clear of the centre, unless inner_radius is 0.
STAGE_EXPORT Result<std::vector<Mesh>> make_spiral(float turns, float inner_radius, float outer_radius, float thickness,
                                                   int segments);

}  // namespace stage
