// Where the OpenGL calls of plug-ins go: nowhere, into the call log (recording_opengl.h), or to the real OpenGL
// (real_opengl.h).
#pragma once

#include "stage/stage_export.h"

namespace stage {

/// One pointer for each function of the contract, named as in OpenGL without its prefix; none is null.
struct OpenGlDispatch {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) void(*name) parameters;
#include "opengl_functions.def"
};

/// A table whose functions do nothing, for frames that are not drawn and for benchmarks of a plug-in alone.
STAGE_EXPORT const OpenGlDispatch& silent_opengl();

/// Sends the OpenGL calls of all plug-ins in the process to `dispatch` from now on. The initial table is
/// silent_opengl().
STAGE_EXPORT void use_opengl(const OpenGlDispatch& dispatch);
STAGE_EXPORT const OpenGlDispatch& current_opengl();

/// The table that the exported services forward to. Not exported: inside the library a forwarded call costs one
/// indirect jump.
extern OpenGlDispatch opengl_in_force;

}  // namespace stage
