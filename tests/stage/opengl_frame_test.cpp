// Pixels of a frame: coverage, straight alpha, passes, textures.
#include <epoxy/gl.h>
#include <tovu/opengl.h>

#include <cmath>

#include "opengl_fixture.h"
#include "stage/opengl/pass.h"
#include "stage/opengl/shapes.h"
#include "stage/opengl/textures.h"

namespace {

using stage::Blend;
using stage::PassSettings;

constexpr int kSize = 8;

/// Maps pixels, with the origin at the bottom left, to the frame.
constexpr stage::Matrix kPixels = {2.0f / kSize, 0, 0, 0, 0, 2.0f / kSize, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1};

struct AlphaCase {
    const char* name;
    stage::FrameColor background;
    std::vector<std::array<float, 4>> layers;
    Blend blend;
    Pixel expected;  // by hand: colour ← colour·(1-a) + c·a (additive: colour + c·a), cover ← a + cover·(1-a), divided
};

constexpr Blend kOver = Blend::kAlpha, kAdd = Blend::kAdditive;
const AlphaCase kAlphaCases[] = {
    {"nothing is transparent", {}, {}, kOver, {0, 0, 0, 0}},
    {"one layer keeps its colour and alpha", {}, {{1, 0.5f, 0, 0.5f}}, kOver, {255, 128, 0, 128}},
    // red .5·.5 = .25, blue .5, cover .75: red ⅓, blue ⅔
    {"the upper of two counts by its alpha", {}, {{1, 0, 0, 0.5f}, {0, 0, 1, 0.5f}}, kOver, {85, 0, 170, 191}},
    // red .25, green .25 added, cover .25 + .75·.25 = .4375: .25 / .4375 = .5714
    {"additive layers add light and cover", {}, {{1, 0, 0, 0.25f}, {0, 1, 0, 0.25f}}, kAdd, {146, 146, 0, 112}},
    // red .5 + .5 = 1, cover .75: held to 1
    {"light beyond the cover is held to white", {}, {{1, 0, 0, 0.5f}, {1, 0, 0, 0.5f}}, kAdd, {255, 0, 0, 191}},
    {"an opaque background stays opaque", {0, 1, 0, 1}, {{1, 0, 0, 0.5f}}, kOver, {128, 128, 0, 255}},
    {"a half clear background comes back", {0.2f, 0.4f, 0.6f, 0.5f}, {}, kOver, {51, 102, 153, 128}},
    {"a layer without alpha leaves no trace", {0.4f, 0, 0, 0.5f}, {{1, 1, 1, 0}}, kOver, {102, 0, 0, 128}},
};

class FrameTest : public OpenGlTest {
  protected:
    /// Draws a square that fills the frame at the depth z.
    static void cover(PassSettings settings, float z = 0) {
        settings.world[14] = z;
        stage::draw_pass(settings, [] { glRectf(-1, -1, 1, 1); });
    }
};

TEST_F(FrameTest, ComesOutWithStraightAlpha) {
    for (const auto& [name, background, layers, blend, expected] : kAlphaCases)
        for (const auto depth : {stage::FrameDepth::kFloat16, stage::FrameDepth::kBytes}) {
            SCOPED_TRACE(name);
            stage::Framebuffer frame = make_frame(2, depth);
            frame.clear(background);
            for (const auto& color : layers) {
                PassSettings settings;
                settings.color = color;
                settings.blend = blend;
                cover(settings);
            }
            // In a frame of bytes, rounding costs one step in the frame and one in the division by the coverage.
            expect_pixel(expected, pixel_at(frame.read(), 1, 0), "anywhere",
                         depth == stage::FrameDepth::kBytes ? 3 : 1);
        }
}

// By hand: a peak of 0.8 + 0.2 t becomes 0.8 + 0.2 t / (1 + t).
TEST_F(FrameTest, LightAboveTheShoulderIsCompressed) {
    const std::tuple<stage::FrameColor, Pixel> cases[] = {
        {{0.8f, 0.4f, 0, 1}, {204, 102, 0, 255}},
        {{1, 1, 1, 1}, {230, 230, 230, 255}},      // t = 1: 0.9
        {{1, 0.5f, 0, 0.5f}, {230, 116, 3, 128}},  // the same; 0.015 / 1.015 of the way from 0 to 0.9 is 0.0133
        {{0.8f + 1.8f, 1.3f, 0, 1},
         {250, 149, 49, 255}}  // t = 9: 0.98; of the way 0.243 / 1.243: 0.1955, 0.49 + 0.0958
    };
    for (const auto& [color, expected] : cases) {
        stage::Framebuffer frame = make_frame(2);
        frame.clear(color);
        expect_pixel(expected, pixel_at(frame.read(0.8f), 1, 1), "anywhere");
    }
}

TEST_F(FrameTest, SamplesAntialiasEdges) {
    for (const auto& [samples, edge] : {std::pair{1, 0}, {4, 128}}) {
        auto frame = stage::Framebuffer::create(kSize, kSize, stage::FrameDepth::kFloat16, samples);
        ASSERT_TRUE(frame) << frame.error().message;
        frame->clear({});
        PassSettings settings;
        settings.projection_view = kPixels;
        const float points[] = {0, 0, 0, 8, 0, 0, 8, 4.45f, 0, 0, 4.45f, 0};
        const int32_t sizes[] = {4};
        stage::draw_filled_outlines(settings, points, sizes);
        const stage::Picture picture = frame->read();
        expect_pixel({255, 255, 255, 255}, pixel_at(picture, 3, 3), "inside");
        const Pixel at_edge = edge == 0 ? Pixel{0, 0, 0, 0} : Pixel{255, 255, 255, edge};
        expect_pixel(at_edge, pixel_at(picture, 3, 4), "at the edge");
        expect_pixel({0, 0, 0, 0}, pixel_at(picture, 3, 5), "outside");
    }
}

constexpr short kWhole = 32767;
constexpr float kCorners[4][3] = {{1, 7, 0}, {1, 1, 0}, {7, 1, 0}, {7, 7, 0}};
constexpr short kTexcoords[4][2] = {{0, kWhole}, {0, 0}, {kWhole, 0}, {kWhole, kWhole}};
constexpr Pixel kColor = {255, 128, 64, 255};

/// A quad of 6 × 6 pixels from (1, 1), sent as plug-ins do.
void send_quad_immediate() {
    ormixGL_glBegin(GL_QUADS);
    for (int i = 0; i < 4; ++i) {
        ormixGL_glColor4ub(255, 128, 64, 255);
        ormixGL_glTexCoord2s(kTexcoords[i][0], kTexcoords[i][1]);
        ormixGL_glVertex3fv(kCorners[i]);
    }
    ormixGL_glEnd();
}

void send_quad_arrays() {
    static const unsigned char colors[] = {255, 128, 64, 255, 255, 128, 64, 255, 255, 128, 64, 255, 255, 128, 64, 255};
    for (const unsigned int array :
         std::initializer_list<unsigned int>{GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY})
        ormixGL_glEnableClientState(array);
    ormixGL_glVertexPointer(3, GL_FLOAT, 0, kCorners);
    ormixGL_glColorPointer(4, GL_UNSIGNED_BYTE, 0, colors);
    ormixGL_glTexCoordPointer(2, GL_SHORT, 0, kTexcoords);
    ormixGL_glDrawArrays(GL_QUADS, 0, 4);
}

const struct {
    stage::PictureFormat format;
    std::array<int, 4> bytes;  // index of the byte for red, green, blue and alpha; -1: full
} kFormats[] = {{stage::kPictureAlpha, {-1, -1, -1, 0}},
                {stage::kPictureLuminance, {0, 0, 0, -1}},
                {stage::kPictureLuminanceAlpha, {0, 0, 0, 1}},
                {stage::kPictureRgb, {0, 1, 2, -1}},
                {stage::kPictureRgba, {0, 1, 2, 3}}};

TEST_F(FrameTest, ShowsTexturedQuadsSentThroughTheServices) {
    PassSettings settings;
    settings.projection_view = kPixels;
    settings.check_every_call = true;
    for (const auto& [format, bytes] : kFormats)
        for (const bool arrays : {true, false}) {
            SCOPED_TRACE(testing::Message() << "format " << format << (arrays ? ", arrays" : ", immediate"));
            // A pixel of the picture covers 1 × 1 or 2 × 3 pixels of the frame. With 2 × 3 only the corners are
            // compared, since all other pixels are interpolated between neighbours.
            stage::Picture picture{arrays ? 6 : 3, arrays ? 6 : 2, format, {}};  // rows of 3 to 24 bytes
            const auto bytes_per_pixel = static_cast<size_t>(stage::bytes_per_pixel(format));
            const size_t size = stage::picture_byte_count(picture.width, picture.height, format);
            for (size_t i = 0; i < size; ++i) picture.bytes.push_back(static_cast<uint8_t>(250 - 7 * i));
            const auto texture = stage::make_texture(picture);
            ASSERT_TRUE(texture) << texture.error().message;
            settings.texture = texture->number();
            stage::Framebuffer frame = make_frame(kSize);
            EXPECT_THAT(stage::draw_pass(settings, arrays ? send_quad_arrays : send_quad_immediate),
                        testing::IsEmpty());
            const stage::Picture drawn = frame.read();
            for (int y = 1; y < 7; ++y)
                for (int x = 1; x < 7; ++x) {
                    if (!arrays && ((x > 1 && x < 6) || (y > 1 && y < 6))) continue;
                    const int column = (x - 1) * picture.width / 6, row = (y - 1) * picture.height / 6;
                    const auto first = static_cast<size_t>(row * picture.width + column) * bytes_per_pixel;
                    Pixel expected = kColor;
                    for (size_t channel = 0; channel < 4; ++channel)
                        if (bytes[channel] >= 0)
                            expected[channel] =
                                expected[channel] * picture.bytes[first + static_cast<size_t>(bytes[channel])] / 255;
                    expect_pixel(expected, pixel_at(drawn, x, y), "inside");
                }
            for (const auto& [x, y] : {std::pair{0, 3}, {7, 3}, {3, 0}, {3, 7}})
                expect_pixel({0, 0, 0, 0}, pixel_at(drawn, x, y), "outside");
        }
}

TEST_F(FrameTest, DrawsOverNearerThingsWithoutADepthTest) {
    stage::Framebuffer frame = make_frame(kSize);
    cover({}, -0.5f);  // window depth grows with z
    PassSettings far;
    far.color = {1, 0, 0, 1};
    far.depth_test = false;
    cover(far, 0.5f);
    expect_pixel({255, 0, 0, 255}, pixel_at(frame.read(), 4, 4), "behind");
}

TEST_F(FrameTest, ShowsShapes) {
    stage::Framebuffer frame = make_frame(kSize);
    const float points[] = {0, 0, 0, 8, 0, 0, 8, 8, 0, 0, 8, 0, 2, 6, 0, 2, 2, 0, 6, 2, 0, 6, 6, 0};
    const auto draw_shape = [&](std::array<float, 4> color, float z, std::vector<int32_t> sizes) {
        PassSettings settings;
        settings.projection_view = kPixels;
        settings.world[14] = z;
        settings.color = color;
        stage::draw_filled_outlines(settings, points, sizes);
    };
    const auto expect_ring_and_hole = [&](Pixel ring, Pixel hole, const char* when) {
        const stage::Picture picture = frame.read();
        for (const auto& [x, y] : {std::pair{1, 1}, {7, 4}, {4, 0}, {1, 6}})
            expect_pixel(ring, pixel_at(picture, x, y), when);
        for (const auto& [x, y] : {std::pair{4, 4}, {2, 2}, {5, 3}}) expect_pixel(hole, pixel_at(picture, x, y), when);
    };
    for (int i = 0; i < 2; ++i) draw_shape({0, 1, 0, 0.5f}, 0, {4, 4});
    expect_ring_and_hole({0, 255, 0, 191}, {0, 0, 0, 0}, "an outline in an outline is a hole; drawn twice over");
    draw_shape({0, 1, 0, 1}, 0, {4, 4});
    PassSettings behind;
    behind.color = {1, 1, 1, 1};
    cover(behind, 0.5f);
    expect_ring_and_hole({0, 255, 0, 255}, {255, 255, 255, 255}, "it hides what lies behind, its hole does not");
    draw_shape({1, 0, 0, 1}, 0.25f, {4});
    expect_ring_and_hole({0, 255, 0, 255}, {255, 0, 0, 255}, "and hides the part of a shape");
    draw_shape({0, 0, 1, 0}, -0.25f, {4});
    draw_shape({0, 0, 1, 1}, -0.125f, {4});
    expect_ring_and_hole({0, 0, 255, 255}, {0, 0, 255, 255}, "what is hidden, or clear, leaves nothing to the next");
}

TEST_F(FrameTest, PlatesAreUprightAndDoNotWriteDepth) {
    const auto texture = stage::make_texture({2, 2, stage::kPictureLuminance, {50, 100, 150, 200}});
    ASSERT_TRUE(texture);
    stage::Framebuffer frame = make_frame(kSize);
    PassSettings settings;
    settings.projection_view = kPixels;
    settings.texture = texture->number();
    settings.color = {1, 0.5f, 0, 1};
    const float corners[] = {0, 0, 0, 8, 0, 0, 8, 8, 0, 0, 8, 0};
    stage::draw_plate(settings, corners);
    const auto expect_corners = [&](const char* when) {
        const stage::Picture picture = frame.read();
        for (const auto& [x, y, value] : {std::tuple{0, 0, 50}, {7, 0, 100}, {0, 7, 150}, {7, 7, 200}})
            expect_pixel({value, value / 2, 0, 255}, pixel_at(picture, x, y), when);
    };
    expect_corners("in colour");
    PassSettings behind;
    behind.color = {0, 0, 1, 1};
    cover(behind, 0.5f);
    expect_pixel({0, 0, 255, 255}, pixel_at(frame.read(), 4, 4), "drawn later, farther away");
    stage::draw_plate(settings, corners);
    expect_corners("again");
    cover(behind, -0.5f);
    stage::draw_plate(settings, corners);
    expect_pixel({0, 0, 255, 255}, pixel_at(frame.read(), 4, 4), "hidden by what is nearer");
}

// A light of two pixels. The left one is neutral; the right one darkens red, doubles green and reduces alpha.
TEST_F(FrameTest, LightDependsOnTheWorldPosition) {
    const auto light = stage::make_texture({2, 1, stage::kPictureRgba, {64, 64, 64, 255, 32, 128, 255, 128}});
    const auto white = stage::make_texture({1, 1, stage::kPictureLuminance, {255}});
    ASSERT_TRUE(light && white);
    glTranslatef(3, 0, 0);  // the caller's matrix must not matter
    for (const bool in_world : {false, true})
        for (const unsigned int texture : {0u, white->number()}) {
            SCOPED_TRACE(testing::Message() << (in_world ? "world" : "local") << ", texture " << texture);
            stage::Framebuffer frame = make_frame(kSize);
            PassSettings settings;
            settings.projection_view = kPixels;
            settings.world[12] = in_world ? 100.0f : 4.0f;
            settings.texture = texture;
            settings.light = {light->number(), {4, 0}, {8, 8}};
            settings.color = {0.5f, 0.25f, 0.1f, 0.8f};
            stage::draw_pass(settings, [&] {
                if (in_world) ormixGL_glLoadIdentity();
                if (texture != 0) ormixGL_glDisable(GL_TEXTURE_2D);
                glRectf(in_world ? 0.0f : -4.0f, 0, in_world ? 8.0f : 4.0f, 8);
            });
            const stage::Picture picture = frame.read();
            for (const int x : {0, 1}) expect_pixel({128, 64, 26, 204}, pixel_at(picture, x, 6), "neutral");
            for (const int x : {6, 7}) expect_pixel({64, 128, 102, 102}, pixel_at(picture, x, 1), "coloured");
        }
    glLoadIdentity();
}

TEST_F(FrameTest, PicturesThatCannotBeTexturesAreNamed) {
    EXPECT_THAT(stage::make_texture({0, 4, stage::kPictureRgb, {}}).error().message, testing::HasSubstr("0 x 4"));
    EXPECT_THAT(stage::make_texture({4, 4, stage::kPictureRgb, std::vector<uint8_t>(47)}).error().message,
                testing::HasSubstr("needs 48"));
    EXPECT_THAT(stage::make_texture({1, 1 << 20, stage::kPictureAlpha, std::vector<uint8_t>(1 << 20)}).error().message,
                testing::HasSubstr("at most"));
    EXPECT_FALSE(stage::Framebuffer::create(0, 1));
    EXPECT_FALSE(stage::Framebuffer::create(1, 1 << 20));
}

/// Each layer changes the frame by less than 1/255, which a frame of bytes would lose.
TEST_F(FrameTest, FaintLayersAddUpInFloats) {
    constexpr int kLayers = 200;
    constexpr float kAlpha = 0.012f;
    const double exact = 255 * 0.5 * (1 - std::pow(1 - kAlpha, kLayers));
    stage::Framebuffer frame = make_frame(kSize);
    frame.clear({0, 0, 0, 1});
    PassSettings settings;
    settings.color = {0.5f, 0.5f, 0.5f, kAlpha};
    for (int i = 0; i < kLayers; ++i) cover(settings);
    // The rounding error of a layer is at most half a step of a 16-bit float below 0.5, which is 0.03 of 255. Later
    // layers reduce earlier errors.
    EXPECT_NEAR(exact, pixel_at(frame.read(), 4, 4)[0], 3);
}

}  // namespace
