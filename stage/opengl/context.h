// An OpenGL context without a window or a display.
#pragma once

#include <memory>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// What answers: texts as OpenGL gives them.
struct OpenGlDescription {
    std::string vendor;
    std::string renderer;  // "llvmpipe (LLVM 15.0.6, 256 bits)"
    std::string version;   // "4.5 (Compatibility Profile) Mesa 22.3.6"
};

/// An OpenGL compatibility context made through EGL: on a surface-less platform where there is one, else on the first
/// device that offers OpenGL, else with a 1 × 1 pbuffer on the default display. Current in the thread that made it.
/// Releases it when destroyed. Move only.
class STAGE_EXPORT OpenGlContext {
  public:
    /// Fails with a message that lists what was tried and why each failed.
    static Result<OpenGlContext> create();

    OpenGlContext(OpenGlContext&&) noexcept;
    OpenGlContext& operator=(OpenGlContext&&) noexcept;
    ~OpenGlContext();

    /// Makes this the calling thread's context again.
    Result<Done> make_current() const;
    const OpenGlDescription& description() const;

  private:
    struct Handles;
    explicit OpenGlContext(std::unique_ptr<Handles> handles);
    std::unique_ptr<Handles> handles_;
};

/// Of the context that is current, whoever made it.
STAGE_EXPORT OpenGlDescription describe_current_opengl();

/// The renderer's name without its build details ("llvmpipe"): what stored pictures are tied to.
STAGE_EXPORT std::string renderer_family(const OpenGlDescription& description);

}  // namespace stage
