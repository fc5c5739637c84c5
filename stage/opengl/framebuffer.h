// The frame that is drawn into.
#pragma once

#include <cstdint>
#include <memory>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

enum class FrameDepth {
    kFloat16,  // per channel; the default
    /// 8 bits per channel, for half the memory. Layers fainter than one step of 255 are lost or rounded up to
    /// one: three columns of 400 puffs each, of alpha 0 to 0.03, came out 2.3 of 255 away from kFloat16 on average and
    /// 39 at most, a third of the pixels by more than 2, with coloured fringes and hard contours that everybody sees.
    kBytes,
};

/// Red, green, blue, alpha in 0…1, straight.
struct FrameColor {
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    float alpha = 0.0f;
};

/// Colour with alpha, depth and stencil of one size, off screen. Belongs to the context that was current when it was
/// made and must be destroyed while that one is current. Move only.
///
/// Colour is blended by SRC_ALPHA, ONE_MINUS_SRC_ALPHA (or SRC_ALPHA, ONE) and alpha by ONE, ONE_MINUS_SRC_ALPHA, so
/// that what is stored is colour × coverage and coverage: colours over transparency come back by a division.
class STAGE_EXPORT Framebuffer {
  public:
    /// width, height: 1 to the renderer's limit (at least 4096), in pixels.
    static Result<Framebuffer> create(int32_t width, int32_t height, FrameDepth depth = FrameDepth::kFloat16);

    Framebuffer(Framebuffer&&) noexcept;
    Framebuffer& operator=(Framebuffer&&) noexcept;
    ~Framebuffer();

    int32_t width() const;
    int32_t height() const;

    /// Makes this the target of drawing, with the viewport over all of it.
    void bind() const;
    /// Fills it with one colour and the farthest depth, and leaves it bound; alpha 0 is a transparent frame.
    void clear(const FrameColor& color) const;

    /// The frame as RGBA bytes with straight alpha, rounded to nearest; where alpha is 0 all four are 0. Light that
    /// additive blending piled up beyond the coverage is held to white × coverage, since straight alpha can't say more.
    Picture read() const;

  private:
    struct Objects;
    explicit Framebuffer(std::unique_ptr<Objects> objects);
    std::unique_ptr<Objects> objects_;
};

}  // namespace stage
