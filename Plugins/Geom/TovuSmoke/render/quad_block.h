// Builds quads in blocks: the fields of the records are gathered into arrays first, then loops over these arrays, which
// the compiler vectorises, compute the corners.
#pragma once

#include "draw_list.h"
#include "quad_arrays.h"

namespace tovu {

constexpr int32_t kQuadsPerBlock = 32;  // the records of this block and the next fit the first-level cache

/// Consecutive entries of the draw list, with the fields that are processed four at a time. These are 0 from `count` up
/// to the next multiple of 4.
struct QuadBlock {
    const DrawEntry* entries;
    int32_t count;
    int32_t next_count;                         // entries of the next block
    alignas(16) float degrees[kQuadsPerBlock];  // of the rotation about z
    alignas(16) float age[kQuadsPerBlock];
    alignas(16) float life[kQuadsPerBlock];
};

/// The values that are the same for all quads of a pass.
struct QuadPlacement {
    const float* position_matrix;  // applied to positions; null: positions are used as stored
    const float* axes;             // matrix whose first two columns are the images of a quad's x and y axes
    float scale_x;                 // factors on half width and half height
    float scale_y;
    bool rotated;  // about the quad's z by `rotation` + `path_angle`
};

/// Placement by draw mode: flat, or facing the camera in local or world coordinates.
QuadPlacement flat_placement(bool rotated);
QuadPlacement local_billboard_placement(const SmokeInstance& instance, const float* position_matrix, Vector3 scale,
                                        bool rotated);
QuadPlacement world_billboard_placement(const SmokeInstance& instance, bool rotated);

/// Gathers the block that begins at draw-list entry `first` of `draw_count`: kQuadsPerBlock quads, or what is left.
/// Call it for consecutive blocks, from the first on. rotated: fills `degrees` too.
void gather_block(int32_t first, int32_t draw_count, bool rotated, QuadBlock& block);

/// Writes the corners of a block's quads: x, y, z, in drawing order. Prefetches the next block's records.
/// corners: 12 floats for each quad and one more, which is overwritten.
/// Each corner is position + axes · R(degrees) · (± half width, ± half height). A rotation by 0 is exact; others agree
/// with the product of the matrices to within 1e-5 of the quad's size.
void build_corners(const QuadPlacement& placement, QuadBlock& block, float* corners);

/// Writes the corners, and the colour of each quad at its four corners.
/// alpha_scale: opacity × 255, within the int32 range. colors: 16 bytes for each quad.
void build_quads(const SmokeInstance& instance, const QuadPlacement& placement, float alpha_scale, QuadBlock& block,
                 float* corners, uint8_t* colors);

}  // namespace tovu
