#include "framebuffer.h"

#include <epoxy/gl.h>
#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "straight_picture.h"

namespace stage {

struct Framebuffer::Objects {
    int32_t width = 0;
    int32_t height = 0;
    GLuint framebuffer = 0;
    GLuint color = 0;  // texture, of one sample per pixel
    GLuint depth_stencil = 0;
    GLuint color_samples = 0;  // with several samples: the renderbuffer to draw into; else 0
    GLuint resolved = 0;       // with several samples: the framebuffer of `color`; else 0

    Objects() = default;
    Objects(const Objects&) = delete;
    Objects& operator=(const Objects&) = delete;
    ~Objects() {
        glDeleteFramebuffers(1, &framebuffer);  // OpenGL ignores numbers that are 0
        glDeleteFramebuffers(1, &resolved);
        glDeleteRenderbuffers(1, &color_samples);
        glDeleteTextures(1, &color);
        glDeleteRenderbuffers(1, &depth_stencil);
    }
};

namespace {

GLenum color_format(FrameDepth depth) {
    return depth == FrameDepth::kFloat16 ? GL_RGBA16F : GL_RGBA8;
}

GLuint make_color_texture(int32_t width, int32_t height, FrameDepth depth) {
    GLuint color = 0;
    glPushAttrib(GL_TEXTURE_BIT);
    glActiveTexture(GL_TEXTURE0);
    glGenTextures(1, &color);
    glBindTexture(GL_TEXTURE_2D, color);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(color_format(depth)), width, height, 0, GL_RGBA, GL_FLOAT,
                 nullptr);
    glPopAttrib();
    return color;
}

GLuint make_renderbuffer(GLenum format, int32_t width, int32_t height, int32_t samples) {
    GLuint renderbuffer = 0;
    glGenRenderbuffers(1, &renderbuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples > 1 ? samples : 0, format, width, height);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    return renderbuffer;
}

int32_t possible_samples(int32_t samples) {
    GLint most = 1;
    glGetIntegerv(GL_MAX_SAMPLES, &most);
    return std::clamp(samples, 1, std::max(most, 1));
}

}  // namespace

Result<Framebuffer> Framebuffer::create(int32_t width, int32_t height, FrameDepth depth, int32_t samples) {
    GLint limit = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &limit);
    GLint texture_limit = 0, viewport_limits[2] = {};
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &texture_limit);
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport_limits);
    limit = std::min({limit, texture_limit, viewport_limits[0], viewport_limits[1]});
    if (width < 1 || height < 1 || width > limit || height > limit)
        return Error{fmt::format("a frame of {} x {} pixels: this renderer takes 1 to {} each", width, height, limit)};

    auto objects = std::make_unique<Objects>();
    objects->width = width;
    objects->height = height;
    objects->color = make_color_texture(width, height, depth);
    samples = possible_samples(samples);
    objects->depth_stencil = make_renderbuffer(GL_DEPTH24_STENCIL8, width, height, samples);
    GLint previous = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    glGenFramebuffers(1, &objects->framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, objects->framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, objects->color, 0);
    if (samples > 1) {
        objects->resolved = objects->framebuffer;
        objects->color_samples = make_renderbuffer(color_format(depth), width, height, samples);
        glGenFramebuffers(1, &objects->framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, objects->framebuffer);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, objects->color_samples);
    }
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, objects->depth_stencil);
    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previous));
    if (status != GL_FRAMEBUFFER_COMPLETE)
        return Error{fmt::format(
            "the renderer cannot draw into a frame of {} x {} pixels with {} (status {:#06x}); take a smaller size",
            width, height, depth == FrameDepth::kFloat16 ? "16-bit floats" : "8 bits", status)};
    return Framebuffer(std::move(objects));
}

int32_t Framebuffer::width() const {
    return objects_->width;
}

int32_t Framebuffer::height() const {
    return objects_->height;
}

void Framebuffer::bind() const {
    glBindFramebuffer(GL_FRAMEBUFFER, objects_->framebuffer);
    glViewport(0, 0, objects_->width, objects_->height);
}

void Framebuffer::clear(const FrameColor& color) const {
    bind();
    glPushAttrib(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT | GL_SCISSOR_BIT);
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glStencilMask(~0u);
    // The frame holds colour × coverage.
    glClearColor(color.red * color.alpha, color.green * color.alpha, color.blue * color.alpha, color.alpha);
    glClearDepth(1.0);
    glClearStencil(0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    glPopAttrib();
}

DrawnPicture Framebuffer::read_drawn() const {
    DrawnPicture picture{objects_->width, objects_->height, {}};
    picture.halves.resize(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height) * 4);
    GLint previous = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &previous);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, objects_->framebuffer);
    if (objects_->resolved != 0) {
        GLint drawn = 0;
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawn);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, objects_->resolved);
        glPushAttrib(GL_SCISSOR_BIT);
        glDisable(GL_SCISSOR_TEST);
        glBlitFramebuffer(0, 0, objects_->width, objects_->height, 0, 0, objects_->width, objects_->height,
                          GL_COLOR_BUFFER_BIT, GL_NEAREST);
        glPopAttrib();
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(drawn));
        glBindFramebuffer(GL_READ_FRAMEBUFFER, objects_->resolved);
    }
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_SKIP_ROWS, 0);
    glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
    glReadPixels(0, 0, objects_->width, objects_->height, GL_RGBA, GL_HALF_FLOAT, picture.halves.data());
    glPopClientAttrib();
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(previous));

    return picture;
}

Picture Framebuffer::read(std::optional<float> shoulder) const {
    return straight_bytes(read_drawn(), shoulder);
}

Framebuffer::Framebuffer(std::unique_ptr<Objects> objects) : objects_(std::move(objects)) {}
Framebuffer::Framebuffer(Framebuffer&&) noexcept = default;
Framebuffer& Framebuffer::operator=(Framebuffer&&) noexcept = default;
Framebuffer::~Framebuffer() = default;

}  // namespace stage
