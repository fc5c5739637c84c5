// One drawing pass: sets the OpenGL state for a plug-in, and restores the earlier state afterwards.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "stage/scene/container.h"
#include "stage/scene/transform.h"
#include "stage/stage_export.h"

namespace stage {

/// A texture over the world's XY plane that scales colours and alpha of everything drawn, outside its rectangle by its
/// edge. Red, green and blue 64 of 255 leave a colour alone, 255 makes it four times as bright (each channel at most
/// 1); alpha 255 leaves the alpha alone.
struct PassLight {
    unsigned int texture = 0;            // OpenGL's number of the texture; 0: no light
    std::array<float, 2> position = {};  // centre, world units
    std::array<float, 2> size = {};      // width and height, world units, above 0
};

struct PassSettings {
    Matrix projection_view = kIdentity;  // projection × view, for GL_PROJECTION
    Matrix world = kIdentity;            // the container's transformation alone, for GL_MODELVIEW
    unsigned int texture = 0;            // OpenGL's number of the texture; 0 draws without one
    PassLight light;
    bool depth_test = true;  // false neither tests nor writes depth
    Blend blend = Blend::kAlpha;
    std::array<float, 4> color = {1.0f, 1.0f, 1.0f, 1.0f};  // the current colour when drawing begins
    bool check_every_call = false;                          // asks for errors after each OpenGL call; slow
};

/// Sets the OpenGL state, sends the exported services to the real OpenGL and calls `draw`, which may call OpenGL
/// directly as well. Afterwards restores the server state, the client state, the three matrix stacks and where the
/// services went before.
///
/// What `draw` finds:
/// - GL_PROJECTION and GL_MODELVIEW as in the settings, GL_MODELVIEW selected, a texture matrix that scales 0…32767 to
///   0…1;
/// - the texture bound and enabled with GL_MODULATE; a light on the second texture unit, which plug-ins leave alone;
/// - blending on: colours with SRC_ALPHA and ONE_MINUS_SRC_ALPHA or, for Blend::kAdditive, ONE; alpha always with ONE,
///   ONE_MINUS_SRC_ALPHA;
/// - the alpha test GL_GREATER 0, the depth test, if any, GL_LEQUAL, depth written;
/// - lighting, culling, fog and stencil test off; line width and point size 1;
/// - no client array enabled, no buffer, program or vertex array object bound.
///
/// A context must be current and the framebuffer bound. Returns what `draw` did wrong, one line each: a glBegin without
/// glEnd, unbalanced matrix stacks, OpenGL errors. Empty when nothing was wrong.
STAGE_EXPORT std::vector<std::string> draw_pass(const PassSettings& settings, const std::function<void()>& draw);

}  // namespace stage
