// The OpenGL functions that tell the call watch of every call. Needs no OpenGL.
#pragma once

#include "stage/opengl_table/dispatch.h"
#include "stage/stage_export.h"

namespace stage {

/// Calls opengl_called of the call watch with the OpenGL name and the arguments: numbers as int32_t or float, the
/// values of vectors and matrices, no addresses. A glDrawArrays has a text of each enabled array more: its kind and the
/// digest of the values that are drawn.
STAGE_EXPORT const OpenGlDispatch& watched_opengl();

}  // namespace stage
