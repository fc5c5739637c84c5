#include "errors.h"

#include <epoxy/gl.h>
#include <fmt/format.h>

namespace stage {
namespace {

std::string error_words(GLenum error) {
    switch (error) {
        case GL_INVALID_ENUM:
            return "invalid enumerant";
        case GL_INVALID_VALUE:
            return "invalid value";
        case GL_INVALID_OPERATION:
            return "invalid operation in this state";
        case GL_STACK_OVERFLOW:
            return "matrix stack overflow";
        case GL_STACK_UNDERFLOW:
            return "matrix stack underflow";
        case GL_OUT_OF_MEMORY:
            return "out of memory";
        case GL_INVALID_FRAMEBUFFER_OPERATION:
            return "incomplete framebuffer";
        default:
            return fmt::format("OpenGL error {:#06x}", error);
    }
}

/// Limits the loop, since a lost context reports errors without end.
constexpr int kMaxFlags = 16;

}  // namespace

std::vector<std::string> take_opengl_errors() {
    std::vector<std::string> errors;
    for (int i = 0; i < kMaxFlags; ++i) {
        const GLenum error = glGetError();
        if (error == GL_NO_ERROR) break;
        errors.push_back(error_words(error));
    }
    return errors;
}

}  // namespace stage
