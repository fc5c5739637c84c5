// Shapes that are drawn by the Stage itself.
#pragma once

#include <cstdint>
#include <span>

#include "pass.h"
#include "stage/stage_export.h"

namespace stage {

/// Fills the area inside closed outlines by the even-odd rule, so that an outline inside another one is a hole. Draws
/// in a separate pass (draw_pass) with these settings, whose texture must be 0. The pass's alpha test drops a colour
/// of alpha 0, so that a clear shape leaves the depth buffer unchanged. Needs a framebuffer with a cleared stencil, and
/// leaves it cleared.
/// points: three floats each, in the container's coordinates, all in one plane. outline_sizes: points per outline.
STAGE_EXPORT void draw_filled_outlines(const PassSettings& settings, std::span<const float> points,
                                       std::span<const int32_t> outline_sizes);

/// Draws the texture of the settings on a quad, multiplied by their colour, in a separate pass. Depth is tested but not
/// written, since soft edges would hide objects that are drawn later behind them.
/// corners: four of three floats each, in the container's coordinates, counter-clockwise from the picture's lower left
/// one; more or fewer draw nothing.
STAGE_EXPORT void draw_plate(const PassSettings& settings, std::span<const float> corners);

}  // namespace stage
