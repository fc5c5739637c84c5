// The path through the client arrays.
#include "quads.h"

#include <cstring>

#include "../host/opengl.h"
#include "quad_block.h"
#include "truncate.h"

namespace tovu {
namespace {

/// Colours of the quads of draw-list entries `first` to `first + count - 1`, the same four bytes at each corner.
/// alpha_scale: opacity × 255.
void build_colors(const SmokeInstance& instance, int32_t first, int32_t count, float alpha_scale, uint8_t* colors) {
    float age[kQuadsPerBlock];
    float life[kQuadsPerBlock];
    for (int32_t i = 0; i < count; ++i) {
        age[i] = draw_list[first + i].particle->age;
        life[i] = draw_list[first + i].particle->life;
    }
    int32_t index[kQuadsPerBlock];
    for (int32_t i = 0; i < count; ++i) index[i] = color_index(age[i], life[i]);
    for (int32_t i = 0; i < count; ++i) {
        const uint8_t* rgb = instance.color_table.rgb[index[i]];
        const uint8_t alpha = low_byte(instance.alpha_table.alpha[alpha_index(index[i])] * alpha_scale);
        const uint8_t rgba[4] = {rgb[0], rgb[1], rgb[2], alpha};
        for (int32_t corner = 0; corner < 4; ++corner) std::memcpy(colors + kBytesPerQuad * i + 4 * corner, rgba, 4);
    }
}

void build_quads(SmokeInstance& instance, const QuadPlacement& placement, float opacity) {
    const float alpha_scale = opacity * 255.0f;
    for (int32_t first = 0; first < instance.draw_count; first += kQuadsPerBlock) {
        const int32_t left = instance.draw_count - first;
        const int32_t count = left < kQuadsPerBlock ? left : kQuadsPerBlock;
        build_corners(placement, first, count, instance.draw_count, quad_vertices + kFloatsPerQuad * first);
        build_colors(instance, first, count, alpha_scale, quad_colors + kBytesPerQuad * first);
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
