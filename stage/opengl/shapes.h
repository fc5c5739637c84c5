// Shapes that the Stage draws itself, around the smoke.
#pragma once

#include <cstdint>
#include <span>

#include "stage/opengl/pass.h"
#include "stage/stage_export.h"

namespace stage {

/// The area inside closed outlines, in a pass of its own with the settings' matrices, blend and colour; the
/// colour's alpha is multiplied by the settings' opacity; at 0 nothing is drawn, into the depth buffer neither. Inside
/// is by the even-odd rule, so that an outline inside another is a hole. Points are three floats each, in the
/// container's coordinates, all in one plane; `outline_sizes` splits them into outlines (points each). Untextured.
/// Needs the framebuffer's stencil, which is left cleared.
STAGE_EXPORT void draw_filled_outlines(const PassSettings& settings, std::span<const float> points,
                                       std::span<const int32_t> outline_sizes);

}  // namespace stage
