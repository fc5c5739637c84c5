// Quads in the making, a block at a time: what is needed of the records is gathered first, then turned into corners by
// loops over arrays, which the compiler makes vectors of.
#pragma once

#include "draw_list.h"
#include "quad_arrays.h"

namespace tovu {

constexpr int32_t kQuadsPerBlock = 64;  // the records of a block stay in the first-level cache while it is worked on

/// What the quads of a block need of their records, in parts of four floats as they lie there: one vector each.
struct QuadBlock {
    int32_t count;
    alignas(16) float position[kQuadsPerBlock][4];  // x, y, z; the fourth is whatever follows
    alignas(16) float sizes[kQuadsPerBlock][4];     // half the width first, half the height third
    alignas(16) float degrees[kQuadsPerBlock];      // of the turn
    alignas(16) float age[kQuadsPerBlock];
    alignas(16) float life[kQuadsPerBlock];
};

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

/// Gathers the block that begins at draw-list entry `first` of `draw_count`: kQuadsPerBlock quads, or what is left.
/// turned: the turns are needed too.
void gather_block(int32_t first, int32_t draw_count, bool turned, QuadBlock& block);

/// Writes the corners of a block's quads: x, y, z, in drawing order. Maps the block's positions.
/// corners: 12 floats for each quad and one more, which is overwritten too.
/// Each corner is position + axes · R(turn) · (± half width, ± half height). A turn of 0 is exact; others agree with a
/// matrix built step by step to within 1e-5 of the quad's size.
void build_corners(const QuadPlacement& placement, QuadBlock& block, float* corners);

}  // namespace tovu
