// Where the OpenGL calls of plug-ins go: nowhere, into the call log, or to the real OpenGL.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "stage/stage_export.h"

namespace stage {

/// One pointer for each function of the contract, named as in OpenGL without its prefix; none is ever null.
struct OpenGlDispatch {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) void(*name) parameters;
#include "stage/opengl/opengl_functions.def"
};

/// Does nothing at all: for benchmarks of what a plug-in itself costs, and for frames that nobody sees.
STAGE_EXPORT const OpenGlDispatch& silent_opengl();

/// Notes each call in the call log (stage/call_log.h) under its OpenGL name, and at each glDrawArrays what would be
/// drawn. Needs no OpenGL. Addresses are followed only for the arrays that are enabled at a glDrawArrays.
STAGE_EXPORT const OpenGlDispatch& recording_opengl();

/// The real OpenGL. A context must be current in the calling thread when a call arrives.
STAGE_EXPORT const OpenGlDispatch& real_opengl();

/// The real OpenGL, asked for an error after each call outside glBegin/glEnd; slow. What it found is a line for each
/// faulty call ("glEnable(1234): invalid enumerant"), handed over and forgotten by take_opengl_complaints. Past 100
/// lines only their number is kept, and told in the last line.
STAGE_EXPORT const OpenGlDispatch& checking_opengl();
STAGE_EXPORT std::vector<std::string> take_opengl_complaints();

/// Sends the calls of all plug-ins to `dispatch` from now on; process-wide, as the exported functions are. Until the
/// first call of this: silent_opengl().
STAGE_EXPORT void use_opengl(const OpenGlDispatch& dispatch);
STAGE_EXPORT const OpenGlDispatch& current_opengl();

/// One client array as a glDrawArrays would read it.
struct RecordedArray {
    int size = 0;               // components per vertex; 0: the array was not enabled
    unsigned int type = 0;      // as given: GL_FLOAT, GL_SHORT, GL_UNSIGNED_BYTE; others leave values empty
    std::vector<float> values;  // size × count numbers, each as it stood in memory (a byte as 0…255)
};

struct RecordedDraw {
    size_t call_index = 0;  // of this glDrawArrays in recorded_calls()
    unsigned int mode = 0;
    int first = 0;
    int count = 0;
    RecordedArray vertices;
    RecordedArray colors;
    RecordedArray texcoords;
};

/// Every glDrawArrays recorded since the last forget_recorded_draws(), while call recording was on.
STAGE_EXPORT const std::vector<RecordedDraw>& recorded_draws();
STAGE_EXPORT void forget_recorded_draws();

/// What the exported services forward to; inside the library only, so that a forwarded call costs one indirect jump.
extern OpenGlDispatch opengl_in_force;

}  // namespace stage
