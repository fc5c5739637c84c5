#include "context.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>
#include <fmt/format.h>

#include <utility>
#include <vector>

namespace stage {

struct OpenGlContext::Handles {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface surface = EGL_NO_SURFACE;  // unchanged if contexts need no surface
    OpenGlDescription description;

    Handles() = default;
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
    // The display stays initialised, since the whole process shares it: another context may use it.
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

/// In the order to try: no window system, then each device, then the default display.
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

/// A configuration for OpenGL (not OpenGL ES) with this type of surface, or null.
EGLConfig choose_config(EGLDisplay display, EGLint surface_type) {
    const EGLint wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE, surface_type, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    return eglChooseConfig(display, wanted, &config, 1, &count) && count > 0 ? config : nullptr;
}

std::string egl_failure(const char* call) {
    return fmt::format("{} failed with EGL error {:#06x}", call, eglGetError());
}

/// Makes a context and, if needed, a surface, and makes them current. After an error the caller destroys those that
/// exist.
Result<Done> open_on(EGLDisplay display, EGLContext& context, EGLSurface& surface) {
    if (display == EGL_NO_DISPLAY) return Error{"there is no such display"};
    if (!eglInitialize(display, nullptr, nullptr)) return Error{egl_failure("eglInitialize")};
    if (!eglBindAPI(EGL_OPENGL_API)) return Error{"it has no OpenGL, only OpenGL ES"};

    const bool needs_surface = !epoxy_has_egl_extension(display, "EGL_KHR_surfaceless_context");
    const EGLConfig config = choose_config(display, needs_surface ? EGL_PBUFFER_BIT : EGL_DONT_CARE);
    if (config == nullptr) return Error{"it has no configuration for OpenGL"};

    // No attributes: the default is the highest version with the compatibility profile, if the driver has it.
    const EGLint attributes[] = {EGL_NONE};
    context = eglCreateContext(display, config, EGL_NO_CONTEXT, attributes);
    if (context == EGL_NO_CONTEXT) return Error{egl_failure("eglCreateContext")};
    if (needs_surface) {
        const EGLint one_pixel[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
        surface = eglCreatePbufferSurface(display, config, one_pixel);
        if (surface == EGL_NO_SURFACE) return Error{egl_failure("eglCreatePbufferSurface")};
    }
    if (!eglMakeCurrent(display, surface, surface, context)) return Error{egl_failure("eglMakeCurrent")};
    return Done{};
}

/// Framebuffers of 16-bit floats need version 3.0; plug-ins need the compatibility profile, for its functions of 1.1.
Result<Done> check_version() {
    if (epoxy_gl_version() < 30) return Error{"its OpenGL is older than 3.0"};
    if (epoxy_gl_version() >= 32) {
        GLint profile = 0;
        glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
        if ((profile & GL_CONTEXT_COMPATIBILITY_PROFILE_BIT) == 0) return Error{"it has no compatibility profile"};
    }
    return Done{};
}

std::string opengl_text(GLenum name) {
    const auto* text = reinterpret_cast<const char*>(glGetString(name));
    return text != nullptr ? text : "";
}

}  // namespace

OpenGlDescription current_opengl_description() {
    return {opengl_text(GL_VENDOR), opengl_text(GL_RENDERER), opengl_text(GL_VERSION)};
}

Result<OpenGlContext> OpenGlContext::create() {
    std::string message = "no OpenGL with a compatibility profile (Debian package libgl1-mesa-dri has one):";
    for (const Platform& platform : platforms()) {
        auto handles = std::make_unique<Handles>();
        handles->display = platform.display;
        Result<Done> opened = open_on(platform.display, handles->context, handles->surface);
        if (opened) opened = check_version();
        if (opened) {
            handles->description = current_opengl_description();
            return OpenGlContext(std::move(handles));
        }
        message += fmt::format("\n  {}: {}", platform.name, opened.error().message);
    }
    return Error{message};
}

Result<Done> OpenGlContext::make_current() const {
    eglBindAPI(EGL_OPENGL_API);
    if (!eglMakeCurrent(handles_->display, handles_->surface, handles_->surface, handles_->context))
        return Error{"the OpenGL context cannot be made current: " + egl_failure("eglMakeCurrent")};
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
