// The state of OpenGL as a pass begins.
#pragma once

#include <cstdint>

namespace probe {

/// Compares what is in force with what a pass may rely on. The functions that hosts export only set state: those that
/// ask for it are taken from the OpenGL that the process has loaded. Does nothing where there is none, and where it
/// does not answer: without a context, and between glBegin and glEnd.
void check_opengl(int32_t container);

/// Draws the axes of the container in red, green and blue, 100 units long, and those of the world in grey. In a reduced
/// pass the host chooses the colours.
void draw_axes(bool reduced, float opacity);

}  // namespace probe
