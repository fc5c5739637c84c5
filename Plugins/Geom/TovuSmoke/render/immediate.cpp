// The drawing path that sends quads corner by corner.
#include "../host/opengl.h"
#include "quad_block.h"
#include "quads.h"
#include "truncate.h"

namespace tovu {
namespace {

/// On this path a factor of exactly 0 leaves its axis unscaled.
Vector3 nonzero_scale(Vector3 scale) {
    return {scale.x == 0.0f ? 1.0f : scale.x, scale.y == 0.0f ? 1.0f : scale.y, scale.z == 0.0f ? 1.0f : scale.z};
}

/// Every particle is rotated by its own angle, whatever the parameters say. A rotation by 0 is exact.
QuadPlacement immediate_placement(const SmokeInstance& instance) {
    switch (instance.draw_mode) {
        case kDrawLocalBillboard:
            return local_billboard_placement(instance, instance.transformation_matrix.m,
                                             nonzero_scale(instance.abs_scale), true);
        case kDrawWorldBillboard:
            return world_billboard_placement(instance, true);
        default:
            return flat_placement(true);
    }
}

void send_corners(const float* corners) {
    for (int32_t corner = 0; corner < 4; ++corner) {
        ormixGL_glTexCoord2s(kQuadTexcoords[2 * corner], kQuadTexcoords[2 * corner + 1]);
        ormixGL_glVertex3fv(corners + 3 * corner);
    }
}

}  // namespace

void draw_immediate(const SmokeInstance& instance, bool full_pass, float opacity) {
    const QuadPlacement placement = immediate_placement(instance);
    const bool world_coordinates = corners_are_world(instance.draw_mode);
    if (world_coordinates) {
        ormixGL_glMatrixMode(GL_MODELVIEW);
        ormixGL_glPushMatrix();
        ormixGL_glLoadIdentity();
    }
    ormixGL_glBegin(GL_QUADS);
    QuadBlock block;
    for (int32_t first = 0; first < instance.draw_count; first += kQuadsPerBlock) {
        float corners[kQuadsPerBlock * kFloatsPerQuad + 1];
        gather_block(first, instance.draw_count, placement.rotated, block);
        build_corners(placement, block, corners);
        for (int32_t i = 0; i < block.count; ++i) {
            const Particle& p = *draw_list[first + i].particle;
            if (full_pass) ormixGL_glColor4ub(p.color[0], p.color[1], p.color[2], low_byte(p.alpha * opacity));
            send_corners(corners + kFloatsPerQuad * i);
        }
    }
    ormixGL_glEnd();
    if (world_coordinates) ormixGL_glPopMatrix();
}

}  // namespace tovu
