// The OpenGL services: each call goes through the current dispatch table.

#include <tovu/opengl.h>

#include "stage/opengl_table/dispatch.h"

// The shared header declares the same functions, so that this file does not compile if a prototype differs from
// opengl_functions.def.
extern "C" {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) \
    STAGE_EXPORT void ormixGL_gl##name parameters {            \
        stage::opengl_in_force.name arguments;                 \
    }
#include "stage/opengl_table/opengl_functions.def"
}
