// What comes out of the frame: coverage, straight alpha, the pixels of a pass, and textures the right way up.
#include <epoxy/gl.h>

#include <cmath>
#include <span>

#include "Plugins/Geom/TovuSmoke/host/opengl.h"
#include "opengl_fixture.h"
#include "stage/opengl/pass.h"
#include "stage/opengl/shapes.h"
#include "stage/opengl/textures.h"

namespace {

using stage::PassBlend;
using stage::PassSettings;

constexpr int kSize = 8;

/// From pixels, origin at the bottom left, to the frame.
constexpr stage::PassMatrix kPixels = {2.0f / kSize, 0, 0, 0, 0, 2.0f / kSize, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1};

struct AlphaCase {
    const char* name;
    stage::FrameColor background;
    std::vector<std::array<float, 4>> layers;
    PassBlend blend;
    Pixel expected;  // by hand: colour ← colour·(1-a) + c·a (additive: colour + c·a), cover ← a + cover·(1-a), divided
};

constexpr PassBlend kOver = PassBlend::kAlpha, kAdd = PassBlend::kAdditive;
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
    /// A square that fills the frame, at this place in depth.
    static void cover(PassSettings settings, float z = 0) {
        settings.world[14] = z;
        stage::draw_pass(settings, [](int32_t, float) { glRectf(-1, -1, 1, 1); });
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
            // Bytes lose a step in the frame and, divided by the cover, another.
            expect_pixel(expected, pixel_at(frame.read(), 1, 0), "anywhere",
                         depth == stage::FrameDepth::kBytes ? 3 : 1);
        }
}

constexpr short kWhole = 32767;
constexpr float kCorners[4][3] = {{2, 6, 0}, {2, 2, 0}, {6, 2, 0}, {6, 6, 0}};
constexpr short kTexcoords[4][2] = {{0, kWhole}, {0, 0}, {kWhole, 0}, {kWhole, kWhole}};
constexpr unsigned char kColors[4][4] = {
    {255, 128, 64, 255}, {255, 128, 64, 255}, {255, 128, 64, 255}, {255, 128, 64, 255}};

/// A quad of 4 × 4 pixels from (2, 2), as plug-ins send it.
void send_quad_immediate() {
    ormixGL_glBegin(GL_QUADS);
    for (int i = 0; i < 4; ++i) {
        ormixGL_glColor4ub(kColors[i][0], kColors[i][1], kColors[i][2], kColors[i][3]);
        ormixGL_glTexCoord2s(kTexcoords[i][0], kTexcoords[i][1]);
        ormixGL_glVertex3fv(kCorners[i]);
    }
    ormixGL_glEnd();
}

void send_quad_arrays() {
    for (const unsigned int array :
         std::initializer_list<unsigned int>{GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY})
        ormixGL_glEnableClientState(array);
    ormixGL_glVertexPointer(3, GL_FLOAT, 0, kCorners);
    ormixGL_glColorPointer(4, GL_UNSIGNED_BYTE, 0, kColors);
    ormixGL_glTexCoordPointer(2, GL_SHORT, 0, kTexcoords);
    ormixGL_glDrawArrays(GL_QUADS, 0, 4);
}

TEST_F(FrameTest, ShowsAQuadSentThroughTheServices) {
    // Rows from the bottom: opaque black, white / half clear white, quarter white.
    const stage::Picture four_pixels = {2, 2, stage::kPictureLuminanceAlpha, {0, 255, 255, 255, 255, 128, 255, 64}};
    const auto texture = stage::make_texture(four_pixels, stage::TextureFilter::kNearest);
    ASSERT_TRUE(texture) << texture.error().message;
    PassSettings settings;
    settings.projection_view = kPixels;
    settings.texture = texture->number();
    settings.check_every_call = true;
    for (const bool arrays : {false, true}) {
        SCOPED_TRACE(arrays ? "arrays" : "immediate");
        stage::Framebuffer frame = make_frame(kSize);
        const auto draw = [&](int32_t, float) { arrays ? send_quad_arrays() : send_quad_immediate(); };
        EXPECT_THAT(stage::draw_pass(settings, draw), testing::IsEmpty());
        const stage::Picture picture = frame.read();
        expect_pixel({0, 0, 0, 255}, pixel_at(picture, 2, 2), "first row, left");
        expect_pixel({255, 128, 64, 255}, pixel_at(picture, 4, 3), "first row, right");
        expect_pixel({255, 128, 64, 128}, pixel_at(picture, 3, 4), "second row, left");
        expect_pixel({255, 128, 64, 64}, pixel_at(picture, 5, 5), "second row, right");
        for (const auto& [x, y] : {std::pair{1, 3}, {6, 3}, {3, 1}, {3, 6}})
            expect_pixel({0, 0, 0, 0}, pixel_at(picture, x, y), "outside");
    }
}

TEST_F(FrameTest, DepthHidesWhatLiesBehindOnlyWhereItIsTested) {
    for (const bool tested : {true, false}) {
        stage::Framebuffer frame = make_frame(kSize);
        cover({}, -0.5f);  // window depth grows with z
        PassSettings far;
        far.depth_test = tested;
        far.color = {1, 0, 0, 1};
        cover(far, 0.5f);
        expect_pixel(tested ? Pixel{255, 255, 255, 255} : Pixel{255, 0, 0, 255}, pixel_at(frame.read(), 4, 4),
                     tested ? "tested" : "untested");
    }
}

TEST_F(FrameTest, FragmentsUpToTheAlphaReferenceAreDropped) {
    for (const float reference : {0.5f, 0.6f}) {
        stage::Framebuffer frame = make_frame(kSize);
        PassSettings settings;
        settings.color = {1, 1, 1, 0.55f};
        settings.alpha_reference = reference;
        cover(settings);
        EXPECT_EQ(reference < 0.55f ? 140 : 0, pixel_at(frame.read(), 4, 4)[3]);
    }
}

TEST_F(FrameTest, ShowsShapes) {
    stage::Framebuffer frame = make_frame(kSize);
    PassSettings settings;
    settings.projection_view = kPixels;
    settings.color = {0, 1, 0, 0.5f};
    const float points[] = {0, 0, 0, 8, 0, 0, 8, 8, 0, 0, 8, 0, 2, 6, 0, 2, 2, 0, 6, 2, 0, 6, 6, 0};
    const int32_t sizes[] = {4, 4};
    for (int i = 0; i < 2; ++i) stage::draw_filled_outlines(settings, points, sizes);
    const stage::Picture outlines = frame.read();
    expect_pixel({0, 0, 0, 0}, pixel_at(outlines, 4, 4), "in the hole, which is an outline inside an outline");
    for (const auto& [x, y] : {std::pair{1, 1}, {7, 4}, {4, 0}, {1, 6}})
        expect_pixel({0, 255, 0, 191}, pixel_at(outlines, x, y), "inside, drawn twice over");
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

/// What bytes would lose: each of many faint layers changes the frame by less than one step of 1/255.
TEST_F(FrameTest, FaintLayersAddUpInFloats) {
    constexpr int kLayers = 200;
    constexpr float kAlpha = 0.012f;
    const double exact = 255 * 0.5 * (1 - std::pow(1 - kAlpha, kLayers));
    stage::Framebuffer frame = make_frame(kSize);
    frame.clear({0, 0, 0, 1});
    PassSettings settings;
    settings.color = {0.5f, 0.5f, 0.5f, kAlpha};
    for (int i = 0; i < kLayers; ++i) cover(settings);
    // Half a step of a 16-bit float below 0.5 for each layer is 0.03 of 255; the later layers fade the earlier errors.
    EXPECT_NEAR(exact, pixel_at(frame.read(), 4, 4)[0], 3);
}

}  // namespace
