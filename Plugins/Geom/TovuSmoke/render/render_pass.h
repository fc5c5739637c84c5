// Draws one instance: OpenGL state, draw list, one of the two drawing paths, force display.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Draws one pass. render_flags: bit 0 set requests a reduced pass, which does not set blending, alpha test, lighting
/// and depth mask, sends no colours in immediate mode, and draws no force display. opacity: factor on every particle's
/// alpha, 0 to 1.
void render_pass(SmokeInstance& instance, int32_t render_flags, float opacity);

}  // namespace tovu
