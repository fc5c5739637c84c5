#include "textures.h"

#include <epoxy/gl.h>
#include <fmt/format.h>

#include "errors.h"

namespace stage {
namespace {

Result<Done> check_picture(const Picture& picture) {
    if (picture.width < 1 || picture.height < 1)
        return Error{
            fmt::format("a texture of {} x {} pixels: both must be at least 1", picture.width, picture.height)};
    const size_t needed = picture_byte_count(picture.width, picture.height, picture.format);
    if (picture.bytes.size() < needed)
        return Error{fmt::format("a texture of {} x {} pixels with {} bytes: it needs {}", picture.width,
                                 picture.height, picture.bytes.size(), needed)};
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    if (picture.width > limit || picture.height > limit)
        return Error{fmt::format("a texture of {} x {} pixels: the renderer takes at most {} x {}", picture.width,
                                 picture.height, limit, limit)};
    return Done{};
}

GLint sized_format(PictureFormat format) {
    switch (format) {
        case kPictureAlpha:
            return GL_ALPHA8;
        case kPictureLuminance:
            return GL_LUMINANCE8;
        case kPictureLuminanceAlpha:
            return GL_LUMINANCE8_ALPHA8;
        case kPictureRgb:
            return GL_RGB8;
        case kPictureRgba:
            break;
    }
    return GL_RGBA8;
}

void set_sampling(bool mipmaps) {
    // GL_LINEAR_MIPMAP_LINEAR looks the same for soft sprites and makes their frames a quarter slower on a software
    // renderer.
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, mipmaps ? GL_LINEAR_MIPMAP_NEAREST : GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

// Creates the texture if it is empty.
Result<Done> fill_texture(Texture& texture, const Picture& picture, bool mipmaps) {
    if (const Result<Done> checked = check_picture(picture); !checked) return checked.error();
    take_opengl_errors();  // discards errors from before this call

    glPushAttrib(GL_TEXTURE_BIT);
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    if (texture.number() == 0) {
        GLuint number = 0;
        glGenTextures(1, &number);
        texture = Texture(number);
    }
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, texture.number());
    set_sampling(mipmaps);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    glTexImage2D(GL_TEXTURE_2D, 0, sized_format(picture.format), picture.width, picture.height, 0,
                 static_cast<GLenum>(picture.format), GL_UNSIGNED_BYTE, picture.bytes.data());
    if (mipmaps) glGenerateMipmap(GL_TEXTURE_2D);
    glPopClientAttrib();
    glPopAttrib();

    if (const auto errors = take_opengl_errors(); !errors.empty())
        return Error{fmt::format("a texture of {} x {} pixels cannot be made: {}", picture.width, picture.height,
                                 errors.front())};
    return Done{};
}

}  // namespace

Texture::~Texture() {
    if (number_ != 0) glDeleteTextures(1, &number_);
}

Result<Texture> make_texture(const Picture& picture) {
    Texture texture;
    const Result<Done> filled = fill_texture(texture, picture, true);
    if (!filled) return filled.error();
    return texture;
}

Result<Done> replace_texture(Texture& texture, const Picture& picture) {
    return fill_texture(texture, picture, false);
}

}  // namespace stage
