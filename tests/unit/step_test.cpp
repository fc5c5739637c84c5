// A step of the live particles gives the same bits as the plain version of its rules.
#include <tovu/opengl.h>

#include <cmath>

#include "expect.h"
#include "plain_step.h"
#include "random_seed.h"
#include "test_host.h"

namespace tovu {
namespace {

struct Setting {
    const char* name;
    stage::ParameterValues values;
    void (*change)(SmokeInstance&) = [](SmokeInstance&) {};
};

const stage::ParameterValues kEverySpread = {
    {"number_of_particles", 331},  {"birth_rate", 1e7},           {"life_time", 0.4},
    {"life_time_spread", 60.0},    {"spawn_range_x", 100.0},      {"spawn_range_y", 100.0},
    {"spawn_range_z", 100.0},      {"size_birth_spread_x", 60.0}, {"rot_start_spread", 90.0},
    {"rot_change_spread", 90.0},   {"color", "0 0 0 0 1 1 1 0"},  {"spawn_cont_name", "shape"},
    {"spawn_image", "noise"},      {"wind_image", "noise"},       {"wind_image_range_x", 90.0},
    {"wind_image_range_y", 70.0},  {"opening_angle_x", 300.0},    {"opening_angle_z", 180.0},
    {"initial_speed_spread", 90.0}};

const Setting kSettings[] = {
    {"nothing acts", {}},
    {"gravity, drag and wind",
     {{"gravity", 9.8}, {"wind_force", 12.0}, {"wind_rot_z", 70.0}, {"air_resistance", 37.0}}},
    {"in world coordinates", {{"gravity", -3.0}, {"wind_force", -5.0}, {"reference", 1}}},
    {"turbulence on three axes", {{"turbulence_x", 7.0}, {"turbulence_y", 7.0}, {"turbulence_z", 7.0}}},
    {"turbulence on one axis", {{"turbulence_y", -1e-3}}},
    {"colours from the arrays", {{"use_array", true}}},
    {"along the path", {{"rot_follow_path", true}, {"wind_force", 2.0}, {"billboard", 0}}},
    {"along the path, facing the camera", {{"rot_follow_path", true}}},
    {"wind from an image, along the path",
     {{"rot_follow_path", true},
      {"turbulence_x", 90.0},
      {"turbulence_y", 40.0},
      {"wind_force", 30.0},
      {"use_wind_image", true}}},
    {"wind from an image without extent",
     {{"wind_force", 30.0}, {"reference", 1}, {"use_wind_image", true}},
     [](SmokeInstance& i) { i.wind_source.rect_min_x = i.wind_source.rect_max_x; }},
    {"wind from a removed image",
     {{"wind_force", 30.0}, {"use_wind_image", true}},
     [](SmokeInstance& i) { i.wind_source.image = -1; }},
    {"death outside an outline", {{"spawn_type", 2}, {"life_time_scale", 40.0}}},
    {"death where a plug-in draws the answer",
     {{"spawn_type", 2}, {"turbulence_x", 3.0}, {"turbulence_y", 3.0}, {"life_time_scale", 1.0}},
     [](SmokeInstance& i) { i.container_source.plugin_mode = 1; }},
    {"death off a mask", {{"spawn_type", 3}, {"life_time_scale", 1.0}}},
    {"a consumer",
     {{"turbulence_x", 1.0}, {"life_time_scale", 50.0}},
     [](SmokeInstance& i) { i.consumer_attached = 1; }},
    {"a consumer that owns the colour", {}, [](SmokeInstance& i) { i.consumer_attached = i.consumer_owns_colour = 1; }},
    {"a step of time 0", {}, [](SmokeInstance& i) { i.time_step = 0; }},
};

struct Outcome {
    std::vector<Particle> records;  // after each step: the live ones, then the pooled ones
    std::vector<Bounds> bounds;     // of each step
    int next_draw;
};

/// Some steps of a smoke of random particles by `move`.
Outcome steps_by(Bounds (*move)(SmokeInstance&), const Setting& setting, uint32_t seed, bool has_caches) {
    TestHost host(seed, 0.03125);  // so that ages meet lives exactly
    std::vector<uint8_t> noise(120 * 30);
    for (size_t i = 0; i < noise.size(); ++i) noise[i] = i % 3 == 0 ? uint8_t{0} : static_cast<uint8_t>(i * 89);
    stage::add_image(host.stage(), "noise", 120, 30, GL_LUMINANCE, noise);
    stage::Mesh star;
    for (int k = 0; k < 40; ++k) {
        const auto angle = static_cast<float>(k), radius = k % 2 ? 50.0f : 20.0f;
        star.vertices.push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
    }
    host.add_outlines("shape", {star, {{{-60, -60, 0}, {-30, -60, 0}, {-30, 60, 0}}}});
    const SmokeHandle smoke = host.add_smoke(with(kEverySpread, setting.values));
    host.container(smoke).placement = {{1, 2, 3}, {10, 20, 30}, {0.5f, 2, 1.5f}};
    host.run_frames(4);
    host.stage().overrides.geom_dispatcher = [](int32_t, int32_t, void*, void* reply) {
        *static_cast<int32_t*>(reply) = std::rand() & 1;
        return 1;
    };
    SmokeInstance& instance = host.block(smoke);
    int number = 0;
    for (Particle* p : host.active(smoke)) {
        ++number;
        p->claimed = number % 3 == 0;
        p->released = number % 3 == 1;
        p->accelerated = number % 4 == 0;
        if (number % 8 == 0) p->age = p->life - 0.03125f;
        if (number % 7 == 0) p->path_angle = 30;
        if (number % 16 == 0) p->velocity = {0, -0.0f, 0};
        if (number % 5 == 0) p->position = p->velocity;
    }
    setting.change(instance);
    InstanceCaches* const caches = instance.caches;
    if (!has_caches) instance.caches = nullptr;
    Outcome outcome;
    for (int step = 0; step < 4; ++step) {
        outcome.bounds.push_back(move(instance));
        for (const auto& list : {host.active(smoke), host.inactive(smoke)})
            for (const Particle* p : list) outcome.records.push_back(*p);
    }
    outcome.next_draw = std::rand();
    instance.caches = caches;
    return outcome;
}

TEST(Step, EqualsItsRulesBitForBit) {
    const RandomSeed seed;
    for (const Setting& setting : kSettings)
        for (const bool has_caches : {true, false}) {
            SCOPED_TRACE(testing::Message() << setting.name << ", caches " << has_caches);
            const Outcome expected = steps_by(plain::move_particles, setting, seed.value, false);
            const Outcome outcome = steps_by(move_particles, setting, seed.value, has_caches);
            EXPECT_EQ(expected.next_draw, outcome.next_draw);
            for (size_t i = 0; i < expected.bounds.size(); ++i)
                EXPECT_EQ(words_of(expected.bounds[i]), words_of(outcome.bounds[i])) << "step " << i;
            ASSERT_EQ(expected.records.size(), outcome.records.size());
            for (size_t i = 0; i < expected.records.size() && !HasFailure(); ++i) {
                SCOPED_TRACE(testing::Message() << "record " << i);
                expect_same(expected.records[i], outcome.records[i]);
            }
        }
}

}  // namespace
}  // namespace tovu
