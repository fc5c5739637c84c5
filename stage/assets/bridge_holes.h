// Connects an outline and its holes into one closed outline, for code that tests each outline on its own.
#pragma once

#include <vector>

#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

/// Returns one closed outline. Under the even-odd rule in the x-y plane it encloses the same area as `outer` and all
/// `holes` together. Each hole is connected by a cut: two equal edges in opposite directions, which cancel out under
/// the even-odd rule. If the holes lie inside `outer` and do not overlap, cuts cross neither contours nor other cuts.
/// The result runs counter-clockwise, its holes clockwise, for any winding of the input. Holes may touch each other or
/// `outer`. z is copied and not used. Holes of fewer than 3 vertices are ignored; if `outer` has fewer than 3, the
/// result is empty.
/// Source: D. Eberly, "Triangulation by Ear Clipping" (Geometric Tools, 2002), section "Polygons with Holes".
/// Takes time in O(holes × vertices).
STAGE_EXPORT Mesh bridge_holes(const Mesh& outer, const std::vector<Mesh>& holes);

}  // namespace stage
