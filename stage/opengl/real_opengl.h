// The dispatch tables that call the real OpenGL. A context must be current in the thread that calls.
#pragma once

#include <string>
#include <vector>

#include "stage/opengl_table/dispatch.h"

namespace stage {

STAGE_EXPORT const OpenGlDispatch& real_opengl();

/// Calls the real OpenGL and checks for an error after each call outside glBegin/glEnd; slow.
STAGE_EXPORT const OpenGlDispatch& checking_opengl();

/// One line for each faulty call that checking_opengl() found ("glEnable(1234): invalid enumerant"), at most 100.
/// Clears the list.
STAGE_EXPORT std::vector<std::string> take_opengl_complaints();

}  // namespace stage
