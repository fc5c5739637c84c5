// An OpenGL context without a window or a display.
#pragma once

#include <memory>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Texts in which OpenGL describes itself.
struct OpenGlDescription {
    std::string vendor;
    std::string renderer;  // "llvmpipe (LLVM 15.0.6, 256 bits)"
    std::string version;   // "4.5 (Compatibility Profile) Mesa 22.3.6"
};

/// The description of the current context.
STAGE_EXPORT OpenGlDescription current_opengl_description();

/// An OpenGL context with the compatibility profile, made through EGL: on the surface-less platform if there is one,
/// else on the first device with OpenGL, else on the default display. Becomes current in the thread that creates it.
/// The destructor destroys the context. Move only.
class STAGE_EXPORT OpenGlContext {
  public:
    /// The error lists every display that was tried, and why it failed.
    static Result<OpenGlContext> create();

    OpenGlContext(OpenGlContext&&) noexcept;
    OpenGlContext& operator=(OpenGlContext&&) noexcept;
    ~OpenGlContext();

    /// Makes this context current in the calling thread.
    Result<Done> make_current() const;
    const OpenGlDescription& description() const;

  private:
    struct Handles;
    explicit OpenGlContext(std::unique_ptr<Handles> handles);
    std::unique_ptr<Handles> handles_;
};

}  // namespace stage
