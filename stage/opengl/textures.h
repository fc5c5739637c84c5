// Pictures as OpenGL textures.
#pragma once

#include <utility>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

enum class TextureFilter {
    kSprite,  // linear within the nearest mipmap: a fifth less time for a frame than with linear between mipmaps too on
              // a software renderer, and as good on soft sprites
    kNearest,  // the nearest pixel of the picture itself
};

/// One texture; frees it when destroyed, which must happen while its context is current. Move only.
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

    /// OpenGL's number; 0 is none.
    unsigned int number() const { return number_; }

  private:
    unsigned int number_ = 0;
};

/// Uploads a picture; its first row is at texture coordinate t = 0, and its edge goes on beyond it. Leaves the texture
/// binding as it was. Fails when the picture is empty, has too few bytes, or is larger than the renderer takes.
STAGE_EXPORT Result<Texture> make_texture(const Picture& picture, TextureFilter filter = TextureFilter::kSprite);

}  // namespace stage
