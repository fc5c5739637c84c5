// One drawing pass: the OpenGL state that a plug-in finds, and the state that is there again afterwards.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "stage/scene/container.h"
#include "stage/stage_export.h"

namespace stage {

struct PassSettings {
    Matrix projection_view = kIdentity;  // projection × view, for GL_PROJECTION
    Matrix world = kIdentity;            // the container's transformation alone, for GL_MODELVIEW
    unsigned int texture = 0;            // OpenGL's number; 0: texturing off
    Blend blend = Blend::kAlpha;
    float opacity = 1.0f;                                   // 0…1, handed to the callback
    int32_t render_flags = 0;                               // handed to the callback; bit 0: a reduced pass
    std::array<float, 4> color = {1.0f, 1.0f, 1.0f, 1.0f};  // the current colour at the start
    bool check_every_call = false;                          // name each faulty OpenGL call; slow
};

/// Draws: called with the settings' render_flags and opacity, calls OpenGL directly or through the exported services.
using PassCallback = std::function<void(int32_t render_flags, float opacity)>;

/// Sets up the state, calls `draw` with the exported services on the real OpenGL, and puts server state, client state,
/// the three matrix stacks and the services' target back as they were, whatever `draw` left.
///
/// What `draw` finds: GL_PROJECTION and GL_MODELVIEW as in the settings, GL_MODELVIEW selected, the texture matrix
/// scaling 0…32767 to 0…1, the texture bound and enabled with GL_MODULATE, blending, alpha test (alpha above 0
/// passes) and depth test (GL_LEQUAL, depth written) on, lighting, culling and fog off, no client array enabled, no
/// buffer, program or vertex array object bound, line width and point size 1. Alpha is blended with ONE,
/// ONE_MINUS_SRC_ALPHA whatever the colour's blend.
///
/// A context must be current and the target bound. Returns what is wrong with the calls of `draw`, a line for each:
/// an open glBegin, unbalanced matrix stacks, OpenGL errors; empty when all is well.
STAGE_EXPORT std::vector<std::string> draw_pass(const PassSettings& settings, const PassCallback& draw);

}  // namespace stage
