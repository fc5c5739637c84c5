#include "stage/opengl/context.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>
#include <fmt/format.h>

#include <utility>
#include <vector>

namespace stage {

struct OpenGlContext::Handles {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface surface = EGL_NO_SURFACE;  // none where the display can do without
    OpenGlDescription description;

    Handles() = default;
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
    // The display stays initialised: it is shared by the whole process, another context may be using it.
    ~Handles() {
        if (context == EGL_NO_CONTEXT) return;
        if (eglGetCurrentContext() == context) eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (surface != EGL_NO_SURFACE) eglDestroySurface(display, surface);
        eglDestroyContext(display, context);
    }
};

namespace {

struct Platform {
    const char* name;
    EGLDisplay display;
};

bool client_has_extension(const char* extension) {
    return epoxy_has_egl_extension(EGL_NO_DISPLAY, extension);
}

/// In the order to try: without any window system, then a bare device, then whatever is the default.
std::vector<Platform> platforms() {
    std::vector<Platform> found;
    if (client_has_extension("EGL_EXT_platform_base") || client_has_extension("EGL_KHR_platform_base")) {
        if (client_has_extension("EGL_MESA_platform_surfaceless"))
            found.push_back({"surface-less platform",
                             eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr)});
        if (client_has_extension("EGL_EXT_platform_device") && client_has_extension("EGL_EXT_device_enumeration")) {
            EGLDeviceEXT devices[16];
            EGLint count = 0;
            if (eglQueryDevicesEXT(16, devices, &count))
                for (EGLint i = 0; i < count; ++i)
                    found.push_back(
                        {"device platform", eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr)});
        }
    }
    found.push_back({"default display", eglGetDisplay(EGL_DEFAULT_DISPLAY)});
    return found;
}

/// Null when there is no configuration for OpenGL (as opposed to OpenGL ES) with such surfaces.
EGLConfig choose_config(EGLDisplay display, EGLint surface_type) {
    const EGLint wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE, surface_type, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    return eglChooseConfig(display, wanted, &config, 1, &count) && count > 0 ? config : nullptr;
}

std::string egl_failure(const char* call) {
    return fmt::format("{} failed with EGL error {:#06x}", call, eglGetError());
}

/// Fills context, surface and description and leaves the context current; a text when something is missing.
/// Handles is the context's private type, so its fields come one by one.
std::string open_on(EGLDisplay display, EGLContext& context, EGLSurface& surface) {
    if (display == EGL_NO_DISPLAY) return "there is no such display";
    if (!eglInitialize(display, nullptr, nullptr)) return egl_failure("eglInitialize");
    if (!eglBindAPI(EGL_OPENGL_API)) return "it has no OpenGL, only OpenGL ES";

    const bool needs_surface = !epoxy_has_egl_extension(display, "EGL_KHR_surfaceless_context");
    const EGLConfig config = choose_config(display, needs_surface ? EGL_PBUFFER_BIT : EGL_DONT_CARE);
    if (config == nullptr) return "it has no configuration for OpenGL";

    // No attributes: the default is the highest version with the compatibility profile, where the driver has one.
    const EGLint attributes[] = {EGL_NONE};
    context = eglCreateContext(display, config, EGL_NO_CONTEXT, attributes);
    if (context == EGL_NO_CONTEXT) return egl_failure("eglCreateContext");
    if (needs_surface) {
        const EGLint one_pixel[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
        surface = eglCreatePbufferSurface(display, config, one_pixel);
        if (surface == EGL_NO_SURFACE) return egl_failure("eglCreatePbufferSurface");
    }
    if (!eglMakeCurrent(display, surface, surface, context)) return egl_failure("eglMakeCurrent");
    return {};
}

/// Framebuffers of 16-bit float need version 3.0, the plug-ins the functions of 1.1.
std::string what_is_missing() {
    if (epoxy_gl_version() < 30) return "its OpenGL is older than 3.0";
    if (epoxy_gl_version() >= 32) {
        GLint profile = 0;
        glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
        if ((profile & GL_CONTEXT_COMPATIBILITY_PROFILE_BIT) == 0) return "it has no compatibility profile";
    }
    return {};
}

std::string opengl_text(GLenum name) {
    const auto* text = reinterpret_cast<const char*>(glGetString(name));
    return text != nullptr ? text : "";
}

}  // namespace

OpenGlDescription describe_current_opengl() {
    return {opengl_text(GL_VENDOR), opengl_text(GL_RENDERER), opengl_text(GL_VERSION)};
}

std::string renderer_family(const OpenGlDescription& description) {
    return description.renderer.substr(0, description.renderer.find(" ("));
}

Result<OpenGlContext> OpenGlContext::create() {
    std::string message = "no OpenGL with a compatibility profile (Debian package libgl1-mesa-dri has one):";
    for (const Platform& platform : platforms()) {
        auto handles = std::make_unique<Handles>();
        handles->display = platform.display;
        std::string problem = open_on(platform.display, handles->context, handles->surface);
        if (problem.empty()) problem = what_is_missing();
        if (problem.empty()) {
            handles->description = describe_current_opengl();
            return OpenGlContext(std::move(handles));
        }
        message += fmt::format("\n  {}: {}", platform.name, problem);
    }
    return Error{message};
}

Result<Done> OpenGlContext::make_current() const {
    eglBindAPI(EGL_OPENGL_API);
    if (!eglMakeCurrent(handles_->display, handles_->surface, handles_->surface, handles_->context))
        return Error{"the OpenGL context can't be made current: " + egl_failure("eglMakeCurrent")};
    return Done{};
}

const OpenGlDescription& OpenGlContext::description() const {
    return handles_->description;
}

OpenGlContext::OpenGlContext(std::unique_ptr<Handles> handles) : handles_(std::move(handles)) {}
OpenGlContext::OpenGlContext(OpenGlContext&&) noexcept = default;
OpenGlContext& OpenGlContext::operator=(OpenGlContext&&) noexcept = default;
OpenGlContext::~OpenGlContext() = default;

}  // namespace stage
