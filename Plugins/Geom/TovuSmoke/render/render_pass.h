// Draws one instance: the state it needs, the draw list, one of the two drawing paths, the force display.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// One pass, as the host asks for it. Bit 0 of `render_flags` set: a reduced pass, which leaves blending, alpha test,
/// lighting, the depth mask and, in immediate mode, the colours to the host, and draws no force display.
/// opacity: factor on every particle's alpha, 0 to 1.
void render_pass(SmokeInstance& instance, int32_t render_flags, float opacity);

}  // namespace tovu
