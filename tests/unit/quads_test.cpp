#include "render/quads.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "expect.h"
#include "plain_quads.h"
#include "random_seed.h"
#include "render/draw_list.h"
#include "render/quad_arrays.h"

namespace tovu {
namespace {

/// An instance with a draw list of its own records, all fields that the quads read set at random.
struct Scene {
    std::unique_ptr<SmokeInstance> instance = std::make_unique<SmokeInstance>();
    std::vector<Particle> particles;
};

Scene random_scene(DrawMode mode, int32_t count, float largest_turn, unsigned seed) {
    std::mt19937 random(seed);
    const auto between = [&random](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    Scene scene;
    SmokeInstance& instance = *scene.instance;
    instance.draw_mode = mode;
    instance.draw_count = count;
    instance.abs_scale = {0.5f, 2.5f, 1.5f};
    rotate(instance.billboard_matrix, 37.0f, {0.3f, 0.9f, 0.1f});
    rotate_z(instance.billboard_matrix, 11.0f);
    translate(instance.transformation_matrix, {3, -4, 5});
    rotate(instance.transformation_matrix, {10, 20, 30});
    scale(instance.transformation_matrix, instance.abs_scale);
    std::memcpy(instance.transformation_copy, instance.transformation_matrix.m, sizeof(instance.transformation_copy));
    for (auto& rgb : instance.color_table.rgb)
        for (uint8_t& component : rgb) component = static_cast<uint8_t>(random());
    for (float& alpha : instance.alpha_table.alpha) alpha = between(0, 1);
    instance.alpha_table.alpha[kAlphaEntries - 1] = 0.0f;

    scene.particles.resize(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) {
        Particle& p = scene.particles[static_cast<size_t>(i)];
        p.size_x = between(0.1f, 10);
        p.size_y = between(0.1f, 10);
        p.position = {between(-20, 20), between(-20, 20), between(-20, 20)};
        p.rotation = i % 8 == 0 ? 0.0f : between(-largest_turn, largest_turn);
        p.path_angle = i % 4 == 0 ? 0.0f : between(-180, 180);
        p.life = between(0.5f, 5);
        p.age = i % 16 == 0 ? p.life : between(0, p.life);
        draw_list[i].particle = &p;
    }
    return scene;
}

/// What single precision leaves of a coordinate, beside what the quad itself may be off by.
float tolerance(const SmokeInstance& instance, const Particle& p, Vector3 corner) {
    const Vector3 scale = instance.draw_mode == kDrawLocalBillboard ? instance.abs_scale : Vector3{1, 1, 1};
    const float size = std::max(std::fabs(p.size_x * scale.x), std::fabs(p.size_y * scale.y));
    return 1e-5f * size + 2e-7f * std::max({std::fabs(corner.x), std::fabs(corner.y), std::fabs(corner.z)});
}

struct QuadCase {
    const char* name;
    DrawMode mode;
    void (*build)(SmokeInstance&, float opacity);
    bool has_rotation;
    float largest_turn;  // degrees
};

class ArrayQuads : public testing::TestWithParam<QuadCase> {};

TEST_P(ArrayQuads, EqualThoseOfTheMatrices) {
    const RandomSeed seed;
    for (int32_t count : {0, 1, 2, 3, 63, 64, 65, 129, 1000, kMaxParticles}) {
        Scene scene = random_scene(GetParam().mode, count, GetParam().largest_turn, seed.value);
        SmokeInstance& instance = *scene.instance;
        instance.parameters.rot_change_spread = GetParam().has_rotation ? 1.0f : 0.0f;
        constexpr float kOpacity = 0.7f;
        GetParam().build(instance, kOpacity);
        EXPECT_EQ(quad_vertices + kFloatsPerQuad * count, instance.vertex_cursor);

        for (int32_t i = 0; i < count; ++i) {
            const Particle& p = scene.particles[static_cast<size_t>(i)];
            const plain::Quad expected = plain::array_quad(instance, p, kOpacity);
            const bool exact = !GetParam().has_rotation && GetParam().mode != kDrawLocalBillboard;
            for (int32_t corner = 0; corner < 4; ++corner) {
                const Vector3 want = expected.corners[static_cast<size_t>(corner)];
                const float* got = quad_vertices + kFloatsPerQuad * i + 3 * corner;
                expect_near(want, {got[0], got[1], got[2]}, exact ? 0.0f : tolerance(instance, p, want));
                ASSERT_EQ(0, std::memcmp(expected.rgba.data(), quad_colors + kBytesPerQuad * i + 4 * corner, 4));
                ASSERT_FALSE(HasFailure()) << "corner " << corner << " of quad " << i << " of " << count;
            }
        }
    }
}

const QuadCase kQuadCases[] = {
    {"local flat", kDrawLocalFlat, build_quads_flat, false, 720},
    {"local flat turned", kDrawLocalFlat, build_quads_flat, true, 720},
    {"local billboard", kDrawLocalBillboard, build_quads_local_billboard, false, 720},
    {"local billboard turned", kDrawLocalBillboard, build_quads_local_billboard, true, 720},
    {"world flat turned", kDrawWorldFlat, build_quads_flat, true, 8000},
    {"world billboard", kDrawWorldBillboard, build_quads_world_billboard, false, 720},
    {"world billboard turned", kDrawWorldBillboard, build_quads_world_billboard, true, 1e7f},
};
INSTANTIATE_TEST_SUITE_P(Modes, ArrayQuads, testing::ValuesIn(kQuadCases),
                         name_of_row<testing::TestParamInfo<QuadCase>>);

TEST(ArrayQuad, WithHostileFloatsStaysInsideTheTables) {
    const float kOdd[] = {0.0f, -1.0f, 1e38f, -1e38f, INFINITY, -INFINITY, NAN};
    Scene scene = random_scene(kDrawWorldBillboard, 1, 0, 1);
    scene.instance->parameters.rot_start = 1;
    Particle& p = scene.particles[0];
    for (float age : kOdd)
        for (float life : kOdd)
            for (float odd : kOdd) {
                p.age = age;
                p.life = life;
                p.rotation = p.size_x = p.position.y = odd;
                build_quads_world_billboard(*scene.instance, odd);  // the sanitizers watch
                const auto& table = scene.instance->color_table.rgb;
                EXPECT_TRUE(std::any_of(std::begin(table), std::end(table),
                                        [](const auto& rgb) { return std::memcmp(rgb, quad_colors, 3) == 0; }))
                    << "age " << age << ", life " << life;
            }
}

TEST(HasRotation, WhereAnyParameterCanTurnAParticle) {
    SmokeInstance instance{};
    EXPECT_FALSE(has_rotation(instance));
    for (float ParameterSlots::*slot : {&ParameterSlots::rot_start, &ParameterSlots::rot_start_spread,
                                        &ParameterSlots::rot_change, &ParameterSlots::rot_change_spread}) {
        SmokeInstance turning{};
        turning.parameters.*slot = -1e-30f;
        EXPECT_TRUE(has_rotation(turning));
    }
    instance.parameters.rot_follow_path = 1;
    EXPECT_TRUE(has_rotation(instance));
}

}  // namespace
}  // namespace tovu
