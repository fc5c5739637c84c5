// Lines that show a designer what moves the particles.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Draws gravity, wind and the direction of emission as lines from the container's position, and the spawn cube.
/// Leaves GL_TEXTURE_2D off, the line width at 1, the point size at 7; matrices as they were.
void draw_force_display(const SmokeInstance& instance);

}  // namespace tovu
