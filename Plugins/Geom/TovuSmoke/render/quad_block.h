// Quads in the making, a block at a time: what is needed of the records is gathered first, then turned into corners by
// loops over arrays, which the compiler makes vectors of.
#pragma once

#include "draw_list.h"
#include "quad_arrays.h"

namespace tovu {

constexpr int32_t kQuadsPerBlock = 64;  // the records of a block stay in the first-level cache while it is worked on

/// What is the same for all quads of a pass.
struct QuadPlacement {
    const float* position_matrix;  // positions are mapped through it; null: used as stored
    const float* axes;             // matrix whose first two columns are the images of a quad's x and y axes
    float scale_x;                 // factors on half width and half height
    float scale_y;
    bool turned;  // quads are turned about their z by `rotation` + `path_angle`
};

/// Placement for the draw mode: flat, or facing the camera in local or world coordinates.
QuadPlacement flat_placement(bool turned);
QuadPlacement local_billboard_placement(const SmokeInstance& instance, const float* position_matrix, Vector3 scale,
                                        bool turned);
QuadPlacement world_billboard_placement(const SmokeInstance& instance, bool turned);

/// Writes the corners of the quads of draw-list entries `first` to `first + count - 1`, x, y, z, in drawing order.
/// count: at most kQuadsPerBlock. corners: 12 floats for each quad and one more, which is overwritten too.
/// Each corner is position + axes · R(turn) · (± half width, ± half height). A turn of 0 is exact; others agree with a
/// matrix built step by step to within 1e-5 of the quad's size while |turn| is below some thousand degrees, beyond
/// which an angle rounded to float radians is itself off by more.
/// The records of the entries up to `fetch_end` - 1 are asked for ahead of use.
void build_corners(const QuadPlacement& placement, int32_t first, int32_t count, int32_t fetch_end, float* corners);

}  // namespace tovu
