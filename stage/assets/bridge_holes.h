// Joins an area and its holes to one closed outline, for readers that test outlines one by one.
#pragma once

#include <vector>

#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

/// One closed outline that encloses, under the even-odd rule in the x-y plane, what `outer` and all `holes` enclose
/// together. Each hole is entered and left along a cut, a pair of equal edges in opposite directions, so that
/// every line crosses a cut twice or not at all; cuts cross neither contours nor each other where the holes lie inside
/// `outer` and apart. The result runs counter-clockwise, its holes clockwise, whatever the winding of the contours was.
/// A contour of fewer than 3 vertices encloses nothing and is left out; without an outer contour the result is empty.
/// Holes may touch each other or `outer`. z is kept and not read.
/// Source: D. Eberly, "Triangulation by Ear Clipping" (Geometric Tools, 2002), section "Polygons with Holes".
/// Costs holes × vertices.
STAGE_EXPORT Mesh bridge_holes(const Mesh& outer, const std::vector<Mesh>& holes);

}  // namespace stage
