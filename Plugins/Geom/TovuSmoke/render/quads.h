// Draws the draw list as quads on one of two paths: corner by corner, or through the shared client arrays. Both draw
// the same corners. The first takes the colour from the record, the second from the colour and alpha tables.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Sends every listed particle as a quad between glBegin and glEnd. A reduced pass (full_pass false) sends no colours.
/// opacity: factor on the record's alpha, 0 to 1. The alpha sent is the low byte of the truncated product.
void draw_immediate(const SmokeInstance& instance, bool full_pass, float opacity);

/// Fill the shared arrays with the listed particles, for `draw_arrays`: one builder for each placement of a quad.
/// opacity: as above, applied to the entry of the alpha table.
void build_quads_flat(SmokeInstance& instance, float opacity);
void build_quads_local_billboard(SmokeInstance& instance, float opacity);
void build_quads_world_billboard(SmokeInstance& instance, float opacity);

/// Sends the pointers to the shared arrays to OpenGL and draws `draw_count` quads.
void draw_arrays(const SmokeInstance& instance);

/// Whether any rotation parameter is on. Only then do the builders rotate quads.
bool has_rotation(const SmokeInstance& instance);

}  // namespace tovu
