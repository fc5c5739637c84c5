// The contract's OpenGL family: each call goes where the dispatch table in force sends it.

#include <tovu/opengl.h>

#include "stage/opengl/dispatch.h"

// The shared header's declarations and these definitions are of the same functions: a prototype that drifts in either
// place is a conflict that doesn't compile.
extern "C" {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) \
    STAGE_EXPORT void ormixGL_gl##name parameters {            \
        stage::opengl_in_force.name arguments;                 \
    }
#include "stage/opengl/opengl_functions.def"
}
