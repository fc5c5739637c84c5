#include "shapes.h"

#include <epoxy/gl.h>

#include <algorithm>

namespace stage {
namespace {

constexpr size_t kFloatsPerPoint = 3;

/// A triangle fan from each outline's first point. It covers the pixels inside the outlines an odd number of times, all
/// others an even number of times.
void send_fans(std::span<const float> points, std::span<const int32_t> outline_sizes) {
    size_t first = 0;
    for (const int32_t size : outline_sizes) {
        const size_t left = points.size() / kFloatsPerPoint - first;
        const size_t count = std::min(static_cast<size_t>(std::max(size, 0)), left);
        glBegin(GL_TRIANGLE_FAN);
        for (size_t i = first; i < first + count; ++i) glVertex3fv(&points[i * kFloatsPerPoint]);
        glEnd();
        first += count;
    }
}

}  // namespace

void draw_filled_outlines(const PassSettings& settings, std::span<const float> points,
                          std::span<const int32_t> outline_sizes) {
    draw_pass(settings, [&] {
        // Step 1 writes only the stencil: each triangle flips the stencil bit of its pixels, regardless of depth.
        glEnable(GL_STENCIL_TEST);
        glStencilMask(1);
        glStencilFunc(GL_ALWAYS, 0, 1);
        glStencilOp(GL_INVERT, GL_INVERT, GL_INVERT);
        glPushAttrib(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        glDisable(GL_DEPTH_TEST);
        send_fans(points, outline_sizes);
        glPopAttrib();

        // Step 2 draws the colour where the bit is set. The first triangle on a pixel clears the bit, so that no pixel
        // is blended twice.
        glStencilFunc(GL_EQUAL, 1, 1);
        glStencilOp(GL_KEEP, GL_ZERO, GL_ZERO);
        send_fans(points, outline_sizes);
    });
}

void draw_plate(const PassSettings& settings, std::span<const float> corners) {
    constexpr short kOne = 32767;  // scaled to 1 by the texture matrix of the pass
    constexpr short kTexcoords[4][2] = {{0, 0}, {kOne, 0}, {kOne, kOne}, {0, kOne}};
    if (corners.size() != 4 * kFloatsPerPoint) return;
    draw_pass(settings, [&] {
        glDepthMask(GL_FALSE);
        glBegin(GL_QUADS);
        for (size_t i = 0; i < 4; ++i) {
            glTexCoord2sv(kTexcoords[i]);
            glVertex3fv(&corners[i * kFloatsPerPoint]);
        }
        glEnd();
    });
}

}  // namespace stage
