#include "render_pass.h"

#include "../host/opengl.h"
#include "../services/host_queries.h"
#include "draw_list.h"
#include "force_display.h"
#include "quads.h"

namespace tovu {
namespace {

/// Runs in the passes of the array path and in the first passes of every instance. The count continues below 0, which
/// has no effect.
void enable_client_arrays(SmokeInstance& instance) {
    // Unsigned, since signed overflow is undefined.
    instance.array_warmup_frames = static_cast<int32_t>(static_cast<uint32_t>(instance.array_warmup_frames) - 1u);
    ormixGL_glEnableClientState(GL_COLOR_ARRAY);
    ormixGL_glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    ormixGL_glEnableClientState(GL_VERTEX_ARRAY);
    ormixGL_glDisableClientState(GL_NORMAL_ARRAY);
}

/// The state of a full pass. The blend and alpha-test functions stay as the host set them.
void set_drawing_state(bool disable_depth) {
    if (disable_depth) ormixGL_glDepthMask(GL_FALSE);
    ormixGL_glDisable(GL_LIGHTING);
    ormixGL_glEnable(GL_BLEND);
    ormixGL_glEnable(GL_ALPHA_TEST);
}

/// Rotates a quad's +Z toward the camera: first the roll in its own plane, then the tilt.
void build_billboard_matrix(SmokeInstance& instance) {
    instance.billboard_matrix = Matrix4{};
    rotate(instance.billboard_matrix, instance.billboard_tilt, instance.billboard_axis);
    rotate_z(instance.billboard_matrix, instance.billboard_roll);
}

void draw_quads(SmokeInstance& instance, bool full_pass, float opacity) {
    if (!param::use_array(instance.parameters)) {
        draw_immediate(instance, full_pass, opacity);
        return;
    }
    switch (instance.draw_mode) {
        case kDrawLocalBillboard:
            build_quads_local_billboard(instance, opacity);
            break;
        case kDrawWorldBillboard:
            build_quads_world_billboard(instance, opacity);
            break;
        default:
            build_quads_flat(instance, opacity);
            break;
    }
    draw_arrays(instance);
}

}  // namespace

void render_pass(SmokeInstance& instance, int32_t render_flags, float opacity) {
    const ParameterSlots& parameters = instance.parameters;
    const bool full_pass = (render_flags & 1) == 0;
    const bool use_array = param::use_array(parameters);
    const bool disable_depth = param::disable_depth(parameters);

    if (instance.array_warmup_frames > 0 || use_array) enable_client_arrays(instance);
    ormixGL_glEnableClientState(GL_COLOR_ARRAY);
    if (full_pass) set_drawing_state(disable_depth);
    if (param::billboard(parameters) == kBillboardParticle) build_billboard_matrix(instance);

    collect_draw_list(instance);
    draw_quads(instance, full_pass, opacity);

    // The count after this pass: the last warm-up pass leaves the colour and vertex arrays enabled.
    if (instance.array_warmup_frames > 0 || use_array) {
        ormixGL_glDisableClientState(GL_COLOR_ARRAY);
        ormixGL_glDisableClientState(GL_VERTEX_ARRAY);
    }
    ormixGL_glDisableClientState(GL_TEXTURE_COORD_ARRAY);

    if (full_pass && param::show_forces(parameters) && !host::is_on_air()) draw_force_display(instance);
    if (disable_depth) ormixGL_glDepthMask(GL_TRUE);
}

}  // namespace tovu
