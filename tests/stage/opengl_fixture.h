// Shared by the tests of real OpenGL: one context for the program, frames, and comparison of pixels.
#pragma once

#include <gmock/gmock.h>

#include <array>
#include <ostream>

#include "stage/opengl/context.h"
#include "stage/opengl/framebuffer.h"

/// Red, green, blue, alpha, straight.
using Pixel = std::array<int, 4>;

inline Pixel pixel_at(const stage::Picture& picture, int x, int y) {
    const size_t at = (static_cast<size_t>(y) * static_cast<size_t>(picture.width) + static_cast<size_t>(x)) * 4;
    return {picture.bytes[at], picture.bytes[at + 1], picture.bytes[at + 2], picture.bytes[at + 3]};
}

/// Accepts a difference of one, which depends on the rounding of the renderer.
inline void expect_pixel(const Pixel& expected, const Pixel& actual, const char* where, int steps = 1) {
    for (size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(expected[i], actual[i], steps) << where << ", channel " << i << " of (" << actual[0] << ", "
                                                   << actual[1] << ", " << actual[2] << ", " << actual[3] << ")";
}

class OpenGlTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        static stage::Result<stage::OpenGlContext> context = stage::OpenGlContext::create();
        ASSERT_TRUE(context) << context.error().message;
        ASSERT_TRUE(context->make_current());
    }

    static stage::Framebuffer make_frame(int32_t size, stage::FrameDepth depth = stage::FrameDepth::kFloat16) {
        stage::Result<stage::Framebuffer> frame = stage::Framebuffer::create(size, size, depth);
        EXPECT_TRUE(frame) << frame.error().message;
        frame->clear({});
        return std::move(*frame);
    }
};
