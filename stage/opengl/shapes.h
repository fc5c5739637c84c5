// Simple shapes that the Stage draws itself: outlines, filled meshes and pictures around the smoke.
#pragma once

#include <cstdint>
#include <span>

#include "stage/opengl/pass.h"
#include "stage/stage_export.h"

namespace stage {

/// Each draws in a pass of its own with the settings' matrices, texture, blend, colour and depth test; the colour's
/// alpha is multiplied by the settings' opacity. Points are three floats each, in the container's coordinates.

/// A closed line through the points; line_width in pixels. Fewer than two points draw nothing.
STAGE_EXPORT void draw_outline(const PassSettings& settings, std::span<const float> points, float line_width);

/// The area inside closed outlines, by the even-odd rule, so that an outline inside another is a hole. `outline_sizes`
/// splits the points into outlines (points each). All points lie in one plane. Untextured. Needs the framebuffer's
/// stencil, which is left cleared.
STAGE_EXPORT void draw_filled_outlines(const PassSettings& settings, std::span<const float> points,
                                       std::span<const int32_t> outline_sizes);

/// Triangles of three indices (from 0, in points) each; a triple with an index out of range is left out. Untextured.
STAGE_EXPORT void draw_triangles(const PassSettings& settings, std::span<const float> points,
                                 std::span<const uint32_t> indices);

/// A rectangle in the plane z = 0, centred on the origin, with the whole texture on it (its first row at the bottom).
STAGE_EXPORT void draw_rectangle(const PassSettings& settings, float width, float height);

}  // namespace stage
