// What the Stage draws by itself, against pictures that were looked at: the sprites, smoke made of them, and shapes.
#include <epoxy/gl.h>

#include <random>

#include "../stage/opengl_fixture.h"
#include "stage/assets/sprites.h"
#include "stage/opengl/pass.h"
#include "stage/opengl/shapes.h"
#include "stage/opengl/textures.h"
#include "stored_picture.h"

namespace {

constexpr int32_t kSize = 192;

/// From pixels, origin at the bottom left, to the frame.
constexpr stage::PassMatrix kPixels = {2.0f / kSize, 0, 0, 0, 0, 2.0f / kSize, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1};

TEST(SpritePictures, AreAsTheyWereDrawn) {
    for (const stage::SpriteKind& kind : stage::sprite_kinds())
        expect_stored_picture("sprite_" + kind.name, *stage::make_sprite(kind.name, 96), kAnyRenderer,
                              {.mean = 0.0, .threshold = 0.0, .share_above = 0.0});
}

class OpenGlPictures : public OpenGlTest {
  protected:
    static std::string renderer() { return stage::renderer_family(stage::describe_current_opengl()); }
};

void send_turned_square(float x, float y, float radius, float angle) {
    constexpr short kWhole = 32767;
    const float along = std::cos(angle) * radius;
    const float across = std::sin(angle) * radius;
    glTexCoord2s(0, kWhole);
    glVertex2f(x - along - across, y - across + along);
    glTexCoord2s(0, 0);
    glVertex2f(x - along + across, y - across - along);
    glTexCoord2s(kWhole, 0);
    glVertex2f(x + along + across, y + across - along);
    glTexCoord2s(kWhole, kWhole);
    glVertex2f(x + along - across, y + across + along);
}

TEST_F(OpenGlPictures, OfAColumnOfPuffs) {
    const stage::Framebuffer frame = make_frame(kSize);
    const auto texture = stage::make_texture(*stage::make_sprite("puff", 128), stage::TextureFilter::kSprite);
    ASSERT_TRUE(texture) << texture.error().message;
    stage::PassSettings settings;
    settings.projection_view = kPixels;
    settings.texture = texture->number();
    settings.depth_test = false;
    std::minstd_rand random(1);
    const auto chance = [&] { return static_cast<float>(random() % 10000) / 10000.0f; };
    const auto complaints = stage::draw_pass(settings, [&](int32_t, float) {
        glBegin(GL_QUADS);
        constexpr int kPuffs = 60;
        for (int i = 0; i < kPuffs; ++i) {
            const float age = static_cast<float>(i) / kPuffs;
            glColor4f(0.9f, 0.85f, 0.8f, 0.3f * (1.0f - age));
            const float x = 96 + (chance() - 0.5f) * (10 + 50 * age);
            send_turned_square(x, 20 + 140 * age, 14 + 26 * age, 6.28f * chance());
        }
        glEnd();
    });
    EXPECT_THAT(complaints, testing::IsEmpty());
    expect_stored_picture("opengl_column_of_puffs", frame.read(), renderer());
}

TEST_F(OpenGlPictures, OfShapes) {
    const stage::Framebuffer frame = make_frame(kSize);
    frame.clear({0.2f, 0.25f, 0.3f, 1});
    stage::PassSettings settings;
    settings.projection_view = kPixels;
    settings.color = {0.9f, 0.7f, 0.2f, 0.8f};
    const float letter[] = {20, 20, 0, 90, 20, 0, 90, 90, 0, 20, 90, 0, 40, 40, 0, 40, 70, 0, 70, 70, 0, 70, 40, 0};
    const int32_t sizes[] = {4, 4};
    stage::draw_filled_outlines(settings, letter, sizes);
    settings.color = {1, 1, 1, 1};
    stage::draw_outline(settings, std::span(letter).first(12), 3);

    const float corners[] = {110, 20, 0, 170, 20, 0, 140, 80, 0};
    const uint32_t triangle[] = {0, 1, 2};
    settings.color = {0.2f, 0.8f, 0.4f, 1};
    stage::draw_triangles(settings, corners, triangle);

    const auto texture = stage::make_texture(*stage::make_sprite("ring", 128));
    ASSERT_TRUE(texture) << texture.error().message;
    settings.texture = texture->number();
    settings.color = {1, 1, 1, 1};
    settings.blend = stage::PassBlend::kAdditive;
    settings.world[12] = 96;
    settings.world[13] = 140;
    stage::draw_rectangle(settings, 160, 80);
    expect_stored_picture("opengl_shapes", frame.read(), renderer());
}

}  // namespace
