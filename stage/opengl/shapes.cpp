#include "stage/opengl/shapes.h"

#include <epoxy/gl.h>

#include <algorithm>

namespace stage {
namespace {

constexpr size_t kFloatsPerPoint = 3;

/// The shapes send no colour of their own, so that the opacity goes into the current one.
PassSettings shape_settings(PassSettings settings, bool textured) {
    settings.color[3] *= settings.opacity;
    if (!textured) settings.texture = 0;
    return settings;
}

void send_points(std::span<const float> points, size_t first, size_t count) {
    for (size_t i = first; i < first + count; ++i) glVertex3fv(&points[i * kFloatsPerPoint]);
}

/// A fan from each outline's first point: every pixel is covered an odd number of times exactly where it is inside.
void send_fans(std::span<const float> points, std::span<const int32_t> outline_sizes) {
    size_t first = 0;
    for (const int32_t size : outline_sizes) {
        const size_t left = points.size() / kFloatsPerPoint - first;
        const size_t count = std::min(static_cast<size_t>(std::max(size, 0)), left);
        glBegin(GL_TRIANGLE_FAN);
        send_points(points, first, count);
        glEnd();
        first += count;
    }
}

}  // namespace

void draw_outline(const PassSettings& settings, std::span<const float> points, float line_width) {
    const size_t count = points.size() / kFloatsPerPoint;
    if (count < 2) return;
    draw_pass(shape_settings(settings, false), [&](int32_t, float) {
        glLineWidth(line_width);
        glBegin(GL_LINE_LOOP);
        send_points(points, 0, count);
        glEnd();
    });
}

void draw_filled_outlines(const PassSettings& settings, std::span<const float> points,
                          std::span<const int32_t> outline_sizes) {
    draw_pass(shape_settings(settings, false), [&](int32_t, float) {
        // First the stencil alone: the fans flip a bit wherever they lie, seen or hidden.
        glEnable(GL_STENCIL_TEST);
        glStencilMask(1);
        glStencilFunc(GL_ALWAYS, 0, 1);
        glStencilOp(GL_INVERT, GL_INVERT, GL_INVERT);
        glPushAttrib(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        glDisable(GL_ALPHA_TEST);
        glDisable(GL_DEPTH_TEST);
        send_fans(points, outline_sizes);
        glPopAttrib();

        // Then the colour where the bit is set. The first triangle on a pixel clears it, so none is blended twice.
        glStencilFunc(GL_EQUAL, 1, 1);
        glStencilOp(GL_KEEP, GL_ZERO, GL_ZERO);
        glDisable(GL_ALPHA_TEST);  // a dropped fragment would leave its bit set
        send_fans(points, outline_sizes);
    });
}

void draw_triangles(const PassSettings& settings, std::span<const float> points, std::span<const uint32_t> indices) {
    const size_t count = points.size() / kFloatsPerPoint;
    draw_pass(shape_settings(settings, false), [&](int32_t, float) {
        glBegin(GL_TRIANGLES);
        for (size_t i = 0; i + 3 <= indices.size(); i += 3) {
            const auto triangle = indices.subspan(i, 3);
            if (std::ranges::any_of(triangle, [count](uint32_t index) { return index >= count; })) continue;
            for (const uint32_t index : triangle) send_points(points, index, 1);
        }
        glEnd();
    });
}

void draw_rectangle(const PassSettings& settings, float width, float height) {
    draw_pass(shape_settings(settings, true), [&](int32_t, float) {
        const float x = width / 2;
        const float y = height / 2;
        constexpr short kWhole = 32767;  // the texture matrix makes it 1
        glBegin(GL_QUADS);
        glTexCoord2s(0, kWhole);
        glVertex3f(-x, y, 0);
        glTexCoord2s(0, 0);
        glVertex3f(-x, -y, 0);
        glTexCoord2s(kWhole, 0);
        glVertex3f(x, -y, 0);
        glTexCoord2s(kWhole, kWhole);
        glVertex3f(x, y, 0);
        glEnd();
    });
}

}  // namespace stage
