// The framebuffer that frames are drawn into.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

enum class FrameDepth {
    kFloat16,  // per channel; the default
    /// 8 bits per channel, half the memory. Layers fainter than one step of 255 are lost or rounded up to one. Measured
    /// with three columns of 400 puffs each, of alpha 0 to 0.03: 2.3 of 255 away from kFloat16 on average, 39 at most,
    /// more than 2 for a third of the pixels, with visible coloured fringes and hard contours.
    kBytes,
};

/// Red, green, blue, alpha in 0…1, straight.
struct FrameColor {
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    float alpha = 0.0f;
};

/// An off-screen framebuffer with colour, alpha, depth and stencil. Belongs to the context that is current at its
/// creation and must be destroyed while that context is current. Move only.
///
/// Colour is blended by SRC_ALPHA, ONE_MINUS_SRC_ALPHA (or SRC_ALPHA, ONE) and alpha by ONE, ONE_MINUS_SRC_ALPHA. So
/// the frame holds colour × coverage in red, green and blue, and the coverage in alpha; read() divides.
class STAGE_EXPORT Framebuffer {
  public:
    /// width, height: 1 to the renderer's limit (at least 4096), in pixels. samples: per pixel, which antialias the
    /// edges of shapes; 1 for none; limited to the number that the renderer supports.
    static Result<Framebuffer> create(int32_t width, int32_t height, FrameDepth depth = FrameDepth::kFloat16,
                                      int32_t samples = 1);

    Framebuffer(Framebuffer&&) noexcept;
    Framebuffer& operator=(Framebuffer&&) noexcept;
    ~Framebuffer();

    int32_t width() const;
    int32_t height() const;

    /// Binds this framebuffer for drawing and sets the viewport to its size.
    void bind() const;
    /// Fills it with one colour, the farthest depth and a stencil of 0, and leaves it bound.
    void clear(const FrameColor& color) const;

    /// Reads the pixels without conversion.
    DrawnPicture read_drawn() const;
    /// Reads the pixels and converts them with straight_bytes (straight_picture.h).
    Picture read(std::optional<float> shoulder = {}) const;

  private:
    struct Objects;
    explicit Framebuffer(std::unique_ptr<Objects> objects);
    std::unique_ptr<Objects> objects_;
};

}  // namespace stage
