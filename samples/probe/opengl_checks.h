// Checks the OpenGL state at the start of a pass.
#pragma once

#include <cstdint>

namespace probe {

/// Compares the OpenGL state with the state that the contract guarantees for a pass. Hosts export no functions that
/// read the state, so these are taken from the OpenGL library that the process has loaded. Does nothing without such a
/// library, without a context, and between glBegin and glEnd.
void check_opengl(int32_t container);

/// Draws the axes of the container in red, green and blue, 100 units long, and those of the world in grey. In a reduced
/// pass the host chooses the colours.
void draw_axes(bool reduced, float opacity);

}  // namespace probe
