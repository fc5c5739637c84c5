// The path through the client arrays.
#include "quads.h"

#include <cstring>

#include "../host/opengl.h"
#include "quad_block.h"

namespace tovu {
namespace {

constexpr float kLargestInt32 = 2147483520.0f;  // the largest float that is one

/// opacity × 255, held to what can be converted to an integer after a factor of 0 to 1; 0 where it is not a number.
float alpha_scale_of(float opacity) {
    const float scale = opacity * 255.0f;
    const float below = scale < kLargestInt32 ? scale : kLargestInt32;
    if (scale != scale) return 0.0f;
    return below > -kLargestInt32 ? below : -kLargestInt32;
}

/// The same four bytes at each corner of a quad.
void build_colors(const SmokeInstance& instance, const QuadBlock& block, float alpha_scale, uint8_t* colors) {
    int32_t index[kQuadsPerBlock];
    for (int32_t i = 0; i < block.count; ++i) index[i] = color_index(block.age[i], block.life[i]);
    for (int32_t i = 0; i < block.count; ++i) {
        const float alpha = instance.alpha_table.alpha[alpha_index(index[i])] * alpha_scale;
        const uint32_t rgb = color_entry(instance, index[i]) & 0x00FFFFFFu;
        const uint32_t rgba = rgb | static_cast<uint32_t>(static_cast<int32_t>(alpha)) << 24;
        const uint32_t corners[4] = {rgba, rgba, rgba, rgba};
        std::memcpy(colors + kBytesPerQuad * i, corners, kBytesPerQuad);
    }
}

void build_quads(SmokeInstance& instance, const QuadPlacement& placement, float opacity) {
    const float alpha_scale = alpha_scale_of(opacity);
    for (int32_t first = 0; first < instance.draw_count; first += kQuadsPerBlock) {
        QuadBlock block;
        gather_block(first, instance.draw_count, placement.turned, block);
        build_corners(placement, block, quad_vertices + kFloatsPerQuad * first);
        build_colors(instance, block, alpha_scale, quad_colors + kBytesPerQuad * first);
    }
    instance.vertex_cursor = quad_vertices + kFloatsPerQuad * instance.draw_count;
}

}  // namespace

bool has_rotation(const SmokeInstance& instance) {
    const ParameterSlots& parameters = instance.parameters;
    return param::rot_start(parameters) != 0.0f || param::rot_start_spread(parameters) != 0.0f ||
           param::rot_change(parameters) != 0.0f || param::rot_change_spread(parameters) != 0.0f ||
           param::rot_follow_path(parameters);
}

void build_quads_flat(SmokeInstance& instance, float opacity) {
    build_quads(instance, flat_placement(has_rotation(instance)), opacity);
}

void build_quads_local_billboard(SmokeInstance& instance, float opacity) {
    const QuadPlacement placement =
        local_billboard_placement(instance, instance.transformation_copy, instance.abs_scale, has_rotation(instance));
    build_quads(instance, placement, opacity);
}

void build_quads_world_billboard(SmokeInstance& instance, float opacity) {
    build_quads(instance, world_billboard_placement(instance, has_rotation(instance)), opacity);
}

void draw_arrays(const SmokeInstance& instance) {
    const bool world_coordinates = instance.draw_mode != kDrawLocalFlat;
    if (world_coordinates) {
        ormixGL_glMatrixMode(GL_MODELVIEW);
        ormixGL_glPushMatrix();
        ormixGL_glLoadIdentity();
    }
    ormixGL_glVertexPointer(3, GL_FLOAT, 0, quad_vertices);
    ormixGL_glTexCoordPointer(2, GL_SHORT, 0, quad_texcoords);
    ormixGL_glColorPointer(4, GL_UNSIGNED_BYTE, 0, quad_colors);
    ormixGL_glDrawArrays(GL_QUADS, 0, 4 * instance.draw_count);
    if (world_coordinates) ormixGL_glPopMatrix();
}

}  // namespace tovu
