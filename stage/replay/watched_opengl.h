// OpenGL functions that report every call to the call watch. Needs no OpenGL.
#pragma once

#include "stage/opengl_table/dispatch.h"
#include "stage/stage_export.h"

namespace stage {

/// Calls opengl_called of the call watch with the OpenGL name and the arguments: numbers as int32_t or float, the
/// values of vectors and matrices, no addresses. A glDrawArrays also has a text for each enabled array: its kind and
/// the digest of the drawn values.
STAGE_EXPORT const OpenGlDispatch& watched_opengl();

}  // namespace stage
