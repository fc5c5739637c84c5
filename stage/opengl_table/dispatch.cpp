#include "dispatch.h"

namespace stage {
namespace {

template <class... Arguments>
void do_nothing(Arguments...) {}

}  // namespace

constexpr OpenGlDispatch kSilentOpenGl = {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) .name = do_nothing,
#include "opengl_functions.def"
};

constinit OpenGlDispatch opengl_in_force = kSilentOpenGl;

const OpenGlDispatch& silent_opengl() {
    return kSilentOpenGl;
}

void use_opengl(const OpenGlDispatch& dispatch) {
    opengl_in_force = dispatch;
}

const OpenGlDispatch& current_opengl() {
    return opengl_in_force;
}

}  // namespace stage
