// Lines that show the forces on the particles to a designer.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Draws gravity, wind and the direction of emission as lines from the container's position, and the spawn cube.
/// Leaves GL_TEXTURE_2D disabled, the line width at 1 and the point size at 7. Restores the matrices.
void draw_force_display(const SmokeInstance& instance);

}  // namespace tovu
