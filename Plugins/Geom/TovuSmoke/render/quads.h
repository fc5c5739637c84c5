// Turns the draw list into quads, by one of two paths: corner by corner, or through the shared client arrays. Both give
// the same quads; they differ in where the colour comes from (immediate: from the record; arrays: from the tables).
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Sends every listed particle as a quad between glBegin and glEnd. A reduced pass (full_pass false) sends no colours.
/// opacity: factor on the record's alpha, 0 to 1; only the low byte of the truncated product counts.
void draw_immediate(const SmokeInstance& instance, bool full_pass, float opacity);

/// Fill the shared arrays with the listed particles, for `draw_arrays`; one builder for each placement of a quad.
/// opacity as above, times the alpha table.
void build_quads_flat(SmokeInstance& instance, float opacity);
void build_quads_local_billboard(SmokeInstance& instance, float opacity);
void build_quads_world_billboard(SmokeInstance& instance, float opacity);

/// Hands the shared arrays to OpenGL and draws `draw_count` quads.
void draw_arrays(const SmokeInstance& instance);

/// Whether any rotation parameter can have turned a particle; the builders then turn their quads.
bool has_rotation(const SmokeInstance& instance);

}  // namespace tovu
