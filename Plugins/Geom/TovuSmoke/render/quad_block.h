// Quads in the making, a block at a time: what is needed of the records is gathered first, then turned into corners by
// loops over arrays, which the compiler makes vectors of.
#pragma once

#include "draw_list.h"
#include "quad_arrays.h"

namespace tovu {

constexpr int32_t kQuadsPerBlock = 32;  // the records of this block and the next fit the first-level cache

/// Some entries of the draw list, and what is worked out of them four at a time: up to three zeros follow the last one.
struct QuadBlock {
    const DrawEntry* entries;
    int32_t count;
    int32_t next_count;                         // entries of the next block
    alignas(16) float degrees[kQuadsPerBlock];  // of the turn
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
/// Blocks are gathered one after the other, from the first on. turned: the turns are needed too.
void gather_block(int32_t first, int32_t draw_count, bool turned, QuadBlock& block);

/// Writes the corners of a block's quads: x, y, z, in drawing order. Asks for the next block's records meanwhile.
/// corners: 12 floats for each quad and one more, which is overwritten too.
/// Each corner is position + axes · R(turn) · (± half width, ± half height). A turn of 0 is exact; others agree with a
/// matrix built step by step to within 1e-5 of the quad's size.
void build_corners(const QuadPlacement& placement, QuadBlock& block, float* corners);

/// The same, and the same four bytes of colour at each corner of a quad.
/// alpha_scale: opacity × 255, whose products with 0 to 1 can be converted to an integer. colors: 16 bytes for each
/// quad.
void build_quads(const SmokeInstance& instance, const QuadPlacement& placement, float alpha_scale, QuadBlock& block,
                 float* corners, uint8_t* colors);

}  // namespace tovu
