// The dispatch table that records calls, and the client arrays that each glDrawArrays reads. Needs no OpenGL.
#pragma once

#include <cstddef>
#include <vector>

#include "dispatch.h"

namespace stage {

/// Adds each call to the call log (stage/call_log.h) under its OpenGL name, and the arrays of each glDrawArrays to
/// recorded_draws(). Reads the memory behind a client array only while it is enabled, and only at a glDrawArrays.
STAGE_EXPORT const OpenGlDispatch& recording_opengl();

/// One client array as a glDrawArrays reads it.
struct RecordedArray {
    int size = 0;               // components per vertex; 0: the array was not enabled
    unsigned int type = 0;      // GL_FLOAT, GL_SHORT or GL_UNSIGNED_BYTE; other types leave `values` empty
    std::vector<float> values;  // size × count numbers, not normalised (a byte as 0…255)
};

struct RecordedDraw {
    size_t call_index = 0;  // index of the glDrawArrays in recorded_calls()
    unsigned int mode = 0;
    int first = 0;
    int count = 0;
    RecordedArray vertices;
    RecordedArray colors;
    RecordedArray texcoords;
};

/// Reads the client arrays that were set through this table, in the same way as glDrawArrays.
RecordedDraw read_client_arrays(unsigned int mode, int first, int count);

/// Every glDrawArrays since the last forget_recorded_draws() that was made while call recording was on.
STAGE_EXPORT const std::vector<RecordedDraw>& recorded_draws();
STAGE_EXPORT void forget_recorded_draws();

}  // namespace stage
