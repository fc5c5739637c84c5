// One step of a live particle: age, death, colour, forces in their order, path angle, size, bounding box.
#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <cstdlib>

#include "render_host.h"

namespace tovu {
namespace {

constexpr float kFloatEpsilon = 1.1920929e-07f;

/// One live particle and no births, in frames of 0.25 s.
struct OneParticle {
    explicit OneParticle(const stage::ParameterValues& values = {}) {
        host.stage().clock.frame_period_seconds = 0.25;
        smoke = host.smoke_of(1, with({{"size_death_x", 5.0}, {"size_death_y", 5.0}}, values));
        host.set(smoke, "birth_rate", 0.0);
        particle = host.active(smoke).at(0);
        particle->position = {1, 2, 3};
        particle->velocity = {0.5f, 1, -0.25f};
        particle->age = 1;
        particle->life = 8;
    }
    RenderHost host;
    SmokeHandle smoke;
    Particle* particle = nullptr;
};

// The container is scaled by (2, 4, 8).
const struct {
    const char* name;
    stage::ParameterValues values;
    Vector3 moved;     // by this step, from (1, 2, 3)
    Vector3 velocity;  // after it, from (0.5, 1, -0.25)
} kForces[] = {
    {"none", {}, {0.5f, 1, -0.25f}, {0.5f, 1, -0.25f}},
    {"gravity counts from the next step", {{"gravity", 8.0}}, {0.5f, 1, -0.25f}, {0.5f, -1, -0.25f}},
    {"gravity is scaled in the world", {{"gravity", 8.0}, {"reference", 1}}, {0.5f, 1, -0.25f}, {0.5f, -7, -0.25f}},
    {"drag", {{"air_resistance", 100.0}}, {0.5f, 1, -0.25f}, {0.45f, 0.9f, -0.225f}},
    {"gravity comes before drag",
     {{"gravity", 8.0}, {"air_resistance", 100.0}},
     {0.5f, 1, -0.25f},
     {0.45f, -0.9f, -0.225f}},
    {"wind moves and does not push", {{"wind_force", 4.0}}, {1.5f, 1, -0.25f}, {0.5f, 1, -0.25f}},
    {"wind about z", {{"wind_force", 4.0}, {"wind_rot_z", 90.0}}, {0.5f, 2, -0.25f}, {0.5f, 1, -0.25f}},
    {"wind about z, then x",
     {{"wind_force", 4.0}, {"wind_rot_z", 90.0}, {"wind_rot_x", 90.0}},
     {0.5f, 1, 0.75f},
     {0.5f, 1, -0.25f}},
    {"wind is scaled in the world",
     {{"wind_force", 4.0}, {"wind_rot_z", 45.0}, {"reference", 1}},
     {0.5f + 2 * 0.70710678f, 1 + 4 * 0.70710678f, -0.25f},
     {0.5f, 1, -0.25f}},
};

TEST(Step, Forces) {
    for (const auto& row : kForces) {
        SCOPED_TRACE(row.name);
        OneParticle one(row.values);
        one.host.container(one.smoke).placement.scale = {2, 4, 8};
        one.host.run_frames(1);
        expect_near(Vector3{1, 2, 3} + row.moved, one.particle->position, 2e-6);
        expect_near(row.velocity, one.particle->velocity, 1e-6);
    }
}

TEST(Step, TurbulenceDrawsByAxisAndIsScaledUnderBothReferences) {
    for (const int reference : {0, 1})
        for (int axes = 1; axes < 8; ++axes) {
            SCOPED_TRACE(testing::Message() << "reference " << reference << ", axes " << axes);
            OneParticle one({{"reference", reference}});
            one.host.container(one.smoke).placement.scale = {2, 4, 8};
            const char* const names[] = {"turbulence_x", "turbulence_y", "turbulence_z"};
            for (int i = 0; i < 3; ++i)
                if (axes >> i & 1) one.host.set(one.smoke, names[i], 3.0 + i);
            std::srand(5);
            one.host.run_frames(1);
            EXPECT_EQ(std::popcount(static_cast<unsigned>(axes)), draws_since(5));
            srandom(5);  // the C library's own sequence, whichever `rand` the smoke calls
            const float moved[] = {one.particle->position.x - 1.5f, one.particle->position.y - 3,
                                   one.particle->position.z - 2.75f};
            for (int i = 0; i < 3; ++i) {
                const double amplitude = 0.25 * (3 + i) * 10 * (2 << i);
                const double expected =
                    axes >> i & 1 ? static_cast<double>(random() >> 16) * amplitude / 32767 - amplitude / 2 : 0;
                EXPECT_NEAR(expected, static_cast<double>(moved[i]), 2e-5) << i;
            }
        }
}

TEST(Step, PathAngle) {
    const struct {
        const char* name;
        Vector3 velocity;
        float degrees;
        stage::ParameterValues values;
        float turned = 0;  // the container about z
    } rows[] = {
        {"right", {2, 0, 0}, -90, {}},
        {"down", {0, -2, 0}, -180, {}},
        {"left", {-2, 0, 0}, 90, {}},
        {"up right", {3, 3, 99}, -45, {}},
        {"down left is below -180", {-3, -3, 0}, -225, {}},
        {"along z alone", {0, 0, 5}, 0, {}},
        {"within epsilon of up", {kFloatEpsilon * 0.99f, 1, 0}, 0, {}},
        {"within epsilon of down", {-kFloatEpsilon * 0.99f, -1, 0}, -180, {}},
        {"wind counts", {0, 1, 0}, -45, {{"wind_force", 4.0}}},
        {"after gravity", {2, 2, 0}, -90, {{"gravity", 8.0}}},
        {"local quads that face the camera are seen through the container", {0, 2, 0}, 30, {}, 30},
        {"flat quads in the world ignore it", {0, 2, 0}, 0, {{"billboard", 0}, {"reference", 1}}, 30},
        {"facing quads in the world ignore it", {0, 2, 0}, 0, {{"reference", 1}}, 30},
        {"flat local quads ignore it", {0, 2, 0}, 0, {{"billboard", 0}}, 30},
        {"off", {2, 0, 0}, 0, {{"rot_follow_path", false}}},
    };
    for (const auto& row : rows) {
        OneParticle one(with({{"rot_follow_path", true}}, row.values));
        one.particle->velocity = row.velocity;
        one.host.container(one.smoke).placement = {
            {9, 9, 9}, {0, 0, row.turned}, {1, row.turned == 0 ? 1.0f : 5.0f, 1}};
        one.host.run_frames(1);
        EXPECT_NEAR(row.degrees, one.particle->path_angle, 2e-6f + 2e-7f * std::fabs(row.degrees)) << row.name;
    }
}

TEST(Step, AgeDecidesLookAndDeath) {
    // Opacity 1 − u over the sampling's 512 points; red falls from 255 in 1024 steps.
    const stage::ParameterValues look = {{"color", "0 1 0 0 1 0 0 0"}, {"alpha_curve", "0 1 0.5 0.5 1 0"}};
    const struct {
        const char* name;
        float age, life;  // before a step of 0.25 s
        bool lives;
        uint8_t red;
        float alpha;
    } rows[] = {
        {"half", 1.75f, 4, true, 127, 127.5f},
        {"age equal to life: alive and transparent", 3.75f, 4, true, 0, 0},
        {"a life of 0", -0.25f, 0, true, 0, 0},
        {"older than its life", 3.8125f, 4, false, 255, 255},  // only its age has changed
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        OneParticle one(look);
        Particle& p = *one.particle;
        p.color[0] = 255;
        p.alpha = 255;
        p.age = row.age;
        p.life = row.life;
        one.host.run_frames(1);
        EXPECT_EQ(row.lives, one.host.active_count(one.smoke) == 1);
        EXPECT_EQ(row.age + 0.25f, p.age);
        EXPECT_EQ(row.red, p.color[0]);
        EXPECT_NEAR(row.alpha, p.alpha, 0.3f);
    }
}

TEST(Step, BoundingBox) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(2);
    host.set(smoke, "birth_rate", 0.0);
    host.active(smoke)[0]->position = {-1, 5, 2};
    host.active(smoke)[1]->position = {4, 3, 2};
    const auto expect_box = [&](Vector3 low, Vector3 high) {
        expect_near(low, host.bounding_box(smoke).minimum, 1e-4);
        expect_near(high, host.bounding_box(smoke).maximum, 1e-4);
    };
    host.run_frames(1);
    expect_box({-1, 3, 2}, {4, 5, 2});
    host.container(smoke).placement = {{1, 1, 1}, {0, 0, 90}, {2, 5, 1}};
    host.run_frames(1);
    expect_box({-1, 3, 2}, {4, 5, 2});
    // In the world: minus the position, turned back by 90° about z, so (x, y) becomes (y, −x), divided by the scaling.
    host.set(smoke, "reference", 1);
    host.run_frames(1);
    expect_box({2 / 2.0f, -3 / 5.0f, 1}, {4 / 2.0f, 2 / 5.0f, 1});
    // Each angle is turned back by itself. About x first (x, y, z) becomes (x, z, −y); then, about y, (−z, y, x), which
    // makes it (y, z, x); last, about z, (y, −x, z), which makes it (z, −y, x). Every other order gives another result.
    host.container(smoke).placement = {};
    host.stage().overrides.container_get_absolute_rotation = [](int32_t, float* x, float* y, float* z) {
        *x = *y = *z = 90;  // read off a matrix, these would come back as other angles
    };
    host.run_frames(1);
    expect_box({2, -5, -1}, {2, -3, 4});
    host.set(smoke, "freeze_motion", true);
    host.start_recording();
    host.run_frames(1);
    EXPECT_EQ(0, host.count_calls("_api__container_set_bounding_box"));
    host.set(smoke, "freeze_motion", false);
    host.press(smoke, "reset");
    host.run_frames(1);
    expect_box({0, 0, 0}, {0, 0, 0});
}

TEST(Step, FreezeUpdatesPoolAndCameraOnly) {
    OneParticle one;
    const Particle before = *one.particle;
    const SmokeInstance& block = one.host.block(one.smoke);
    const float due = block.birth_accumulator;
    one.host.set(one.smoke, "freeze_motion", true);
    one.host.set(one.smoke, "number_of_particles", 7);
    one.host.stage().camera.pan_degrees = 35;
    one.host.container(one.smoke).placement.position = {1, 2, 3};
    one.host.run_frames(2);
    EXPECT_EQ(7, block.particle_count);
    EXPECT_EQ(3.0f, block.abs_position.z);
    EXPECT_NEAR(35.0f, std::fabs(block.billboard_tilt), 1e-4f);
    expect_same(before, *one.particle);
    EXPECT_EQ(due, block.birth_accumulator);
}

const struct {
    const char* name;
    int spawn_type;
    double scale;   // Death Acceleration, percent
    bool on_shape;  // the particle stands inside the outline, or on a lit pixel
    bool attached, released;
    float life, age;  // after a step of 0.25 s from age 1 of 8
    int accelerated;
    bool container_removed = false;
} kDeaths[] = {
    {"100 changes nothing", 2, 100, false, true, true, 8, 1.25f, 0},
    {"cube", 0, 50, false, false, true, 8, 1.25f, 0},
    {"cube, released", 0, 50, false, true, true, 4, 0.625f, 1},
    {"sphere, released", 1, 50, false, true, true, 4, 0.625f, 1},
    {"outside the container", 2, 50, false, false, false, 4, 0.625f, 1},
    {"inside the container", 2, 50, true, false, false, 8, 1.25f, 0},
    {"inside outlines whose container is removed", 2, 50, true, false, false, 4, 0.625f, 1, true},
    {"inside the container, released", 2, 50, true, true, true, 4, 0.625f, 1},
    {"outside and released counts once", 2, 50, false, true, true, 4, 0.625f, 1},
    {"off the mask keeps its age", 3, 50, false, false, false, 4.625f, 1.25f, 1},
    {"on the mask", 3, 50, true, false, false, 8, 1.25f, 0},
    {"on the mask, released: the mask alone decides", 3, 50, true, true, true, 8, 1.25f, 0},
    {"0 off the mask: dies in the next step", 3, 0, false, false, false, 1.25f, 1.25f, 1},
    {"0 outside the container: no age either", 2, 0, false, false, false, 0, 0, 1},
};

TEST(Step, DeathAcceleration) {
    for (const auto& row : kDeaths) {
        SCOPED_TRACE(row.name);
        OneParticle one({{"spawn_cont_name", "square"},
                         {"spawn_image", "mask"},
                         {"spawn_range_x", 100.0},
                         {"spawn_range_y", 100.0}});
        const int32_t square =
            one.host.add_outlines("square", {{{{0, 0, 0}, {100, 0, 0}, {100, 100, 0}, {0, 100, 0}}}});
        stage::add_image(one.host.stage(), "mask", 2, 1, GL_LUMINANCE, {0, 255});  // lit where x is not below 0
        one.host.set(one.smoke, "freeze_motion", true);
        one.host.set(one.smoke, "spawn_type", row.spawn_type);
        one.host.set(one.smoke, "life_time_scale", row.scale);
        stage::notify_changed(one.host.stage(), one.smoke.container, kIndex_spawn_cont_name);
        stage::notify_changed(one.host.stage(), one.smoke.container, kIndex_spawn_image);
        one.host.run_frames(2);
        one.host.set(one.smoke, "freeze_motion", false);
        if (row.container_removed) stage::remove_container(one.host.stage(), square);
        one.particle->position = {row.on_shape ? 10.0f : -10.0f, 10, 0};
        one.particle->velocity = {-20, 0, 0};  // tested before it moves
        one.host.block(one.smoke).consumer_attached = row.attached;
        one.particle->claimed = row.attached;
        one.particle->released = row.released;
        one.host.run_frames(1);
        EXPECT_NEAR(row.life, one.particle->life, 1e-6f);
        EXPECT_NEAR(row.age, one.particle->age, 1e-6f);
        EXPECT_EQ(row.accelerated, one.particle->accelerated);
        one.host.run_frames(row.scale == 0 ? 0 : 1);
        EXPECT_NEAR(row.scale == 100 ? 8 : row.life, one.particle->life, row.accelerated ? 1e-6f : 8) << "only once";
    }
}

}  // namespace
}  // namespace tovu
