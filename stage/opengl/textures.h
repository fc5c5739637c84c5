// Pictures as OpenGL textures.
#pragma once

#include <utility>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// One texture; the destructor frees it and needs its context current. Move only.
class STAGE_EXPORT Texture {
  public:
    Texture() = default;
    explicit Texture(unsigned int number) : number_(number) {}
    Texture(Texture&& other) noexcept : number_(std::exchange(other.number_, 0u)) {}
    Texture& operator=(Texture&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Texture();

    /// OpenGL's number; 0: no texture.
    unsigned int number() const { return number_; }

  private:
    unsigned int number_ = 0;
};

/// Uploads a picture with its mipmaps. Its first row is at texture coordinate t = 0; coordinates beyond 0…1 are clamped
/// to the edge. Leaves the texture binding unchanged. An error when the picture is empty, has too few bytes, or is
/// larger than the limit of the renderer.
STAGE_EXPORT Result<Texture> make_texture(const Picture& picture);

/// Replaces the picture of a texture, without mipmaps. Creates the texture if it is empty. Errors as for make_texture.
STAGE_EXPORT Result<Done> replace_texture(Texture& texture, const Picture& picture);

}  // namespace stage
