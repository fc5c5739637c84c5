// The drawing path through the client arrays.
#include "quads.h"

#include <algorithm>
#include <cmath>

#include "../host/opengl.h"
#include "quad_block.h"

namespace tovu {
namespace {

constexpr float kMaxInt32 = 2147483520.0f;  // the largest float in the int32 range

/// opacity × 255, clamped to the int32 range, so that its product with 0 to 1 can be converted. NaN gives 0.
float alpha_scale_of(float opacity) {
    const float scale = opacity * 255.0f;
    return std::isnan(scale) ? 0.0f : std::clamp(scale, -kMaxInt32, kMaxInt32);
}

void build_quads(SmokeInstance& instance, const QuadPlacement& placement, float opacity) {
    const float alpha_scale = alpha_scale_of(opacity);
    QuadBlock block;
    for (int32_t first = 0; first < instance.draw_count; first += kQuadsPerBlock) {
        gather_block(first, instance.draw_count, placement.rotated, block);
        build_quads(instance, placement, alpha_scale, block, quad_vertices + kFloatsPerQuad * first,
                    quad_colors + kBytesPerQuad * first);
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
    const bool world_coordinates = corners_are_world(instance.draw_mode);
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
