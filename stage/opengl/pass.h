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

/// A texture over the world's XY plane that scales the colours and the alpha of everything drawn. Outside its rectangle
/// the pixels of its edge apply. Red, green and blue of 64 leave a colour unchanged, 255 makes it four times as bright
/// (each channel at most 1). Alpha of 255 leaves the alpha unchanged.
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
    std::array<float, 4> color = {1.0f, 1.0f, 1.0f, 1.0f};  // the current colour at the start of the pass
    bool check_every_call = false;                          // check for errors after each OpenGL call; slow
};

/// Sets the OpenGL state, sends the exported services to the real OpenGL and calls `draw`, which may call OpenGL
/// directly as well. Afterwards restores the server state, the client state, the three matrix stacks and the previous
/// dispatch table of the services.
///
/// State at the start of `draw`:
/// - GL_PROJECTION and GL_MODELVIEW as in the settings, GL_MODELVIEW selected, a texture matrix that scales 0…32767 to
///   0…1;
/// - the texture bound and enabled with GL_MODULATE; a light on the second texture unit, which plug-ins do not use;
/// - blending on: colours with SRC_ALPHA and ONE_MINUS_SRC_ALPHA or, for Blend::kAdditive, ONE; alpha always with ONE,
///   ONE_MINUS_SRC_ALPHA;
/// - the alpha test GL_GREATER 0, the depth test, if any, GL_LEQUAL, depth written;
/// - lighting, culling, fog and stencil test off; line width and point size 1;
/// - no client array enabled, no buffer, program or vertex array object bound.
///
/// A context must be current and the framebuffer bound. Returns a line for each fault of `draw`: a glBegin without
/// glEnd, unbalanced matrix stacks, OpenGL errors.
STAGE_EXPORT std::vector<std::string> draw_pass(const PassSettings& settings, const std::function<void()>& draw);

}  // namespace stage
