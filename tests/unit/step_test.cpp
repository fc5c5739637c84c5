// A step of the live particles comes to the same, to the bit, as its rules do one particle at a time.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "outline_source.h"
#include "particles/active_array.h"
#include "particles/instance_caches.h"
#include "plain_step.h"
#include "random_seed.h"
#include "stage/scene/container.h"
#include "stage/scene/image.h"
#include "stage/scene/stage.h"

#pragma GCC diagnostic ignored "-Wmissing-field-initializers"  // a setting names the slots that it changes

namespace tovu {
namespace {

constexpr int32_t kRecords = 331;  // no multiple of a block
constexpr int kSteps = 4;
constexpr int32_t kLuminance = 0x1909;

/// A Stage with a container, and an image of noise of which a third is black. Its geometries say of a point whether it
/// is inside by drawing a random number.
struct Host {
    stage::StagePtr stage = stage::make_stage();
    int32_t container = stage::add_container(*stage, "outline");
    int32_t image = stage::kNoObject;

    Host() {
        std::vector<uint8_t> noise(120 * 30);
        for (size_t i = 0; i < noise.size(); ++i) noise[i] = i % 3 == 0 ? uint8_t{0} : static_cast<uint8_t>(i * 89);
        image = *stage::add_image(*stage, "noise", 120, 30, kLuminance, noise);
        stage::set_mesh_geometry(*stage, container, {});
        stage->overrides.geom_dispatcher = [](int32_t, int32_t, void*, void* reply) {
            *static_cast<int32_t*>(reply) = std::rand() & 1;
            return 1;
        };
    }
};

/// A smoke whose records lie in an array in random order; every choice comes from the seed, so that two of the same
/// seed are alike.
struct Smoke {
    SmokeInstance instance;
    InstanceCaches caches;
    std::vector<Particle> records = std::vector<Particle>(kRecords);

    Smoke(uint32_t seed, const Host& host, const OutlineSource& outline);
    Smoke(const Smoke&) = delete;
    Smoke& operator=(const Smoke&) = delete;
};

Particle random_particle(std::mt19937& random) {
    const auto between = [&random](float low, float high) {
        // One value in eight stands at the lower end, to meet equal ages and lives, zeros and edges.
        return random() % 8 == 0 ? low : std::uniform_real_distribution<float>(low, high)(random);
    };
    Particle p{};
    p.position = {between(-60, 60), between(-60, 60), between(-60, 60)};
    p.velocity = {between(-0.0f, 2), between(-2, 2), between(-2, 2)};
    if (random() % 16 == 0) p.velocity = {0, -0.0f, 0};
    for (uint8_t& component : p.color) component = static_cast<uint8_t>(random());
    p.alpha = between(0, 255);
    p.size_x = between(-1, 10);
    p.size_y = between(-1, 10);
    p.size_step_x = between(-1, 1);
    p.size_step_y = between(-1, 1);
    p.rotation = between(-400, 400);
    p.rotation_step = between(-0.0f, 9);
    p.path_angle = between(-180, 180);
    p.life = between(0.03125f, 1);
    p.age = random() % 32 == 0 ? p.life - 0.03125f : between(0, 1) * p.life;
    p.accelerated = random() % 4 == 0;
    p.claimed = random() % 3 == 0;
    p.released = random() % 3 == 0;
    return p;
}

Smoke::Smoke(uint32_t seed, const Host& host, const OutlineSource& outline) {
    std::mt19937 random(seed);
    std::vector<Particle*> order;
    for (Particle& record : records) {
        record = random_particle(random);
        order.push_back(&record);
    }
    std::shuffle(order.begin(), order.end(), random);
    for (Particle* record : order)
        if (random() % 8 == 0)
            move_to_inactive(instance, *record);
        else
            move_to_active(instance, *record);
    instance.time_step = 0.03125;  // so that ages meet lives exactly
    instance.abs_scale = {0.5f, 2, 1.5f};
    rotate(instance.rotation_scale_matrix, {10, 20, 30});
    for (auto& rgb : instance.color_table.rgb)
        for (uint8_t& component : rgb) component = static_cast<uint8_t>(random());
    for (float& alpha : instance.alpha_table.alpha) alpha = static_cast<float>(random() % 1000) / 999;
    instance.container_source = outline.source;
    instance.container_source.container = host.container;
    for (ImageSource* source : {&instance.wind_source, &instance.spawn_image_source}) {
        load(*source, host.image);
        set_rect(*source, -40, -40, 50, 30);
    }
}

struct Setting {
    const char* name;
    ParameterSlots slots;  // a Death Acceleration of 0 stands for the default
    void (*change)(SmokeInstance&) = [](SmokeInstance&) {};
};

const Setting kSettings[] = {
    {"nothing acts", {}},
    {"gravity, drag and wind", {.gravity = 9.81f, .wind_force = 12, .wind_rot_z = 70, .air_resistance = 37}},
    {"in world coordinates", {.gravity = -3, .wind_force = -5, .reference = kReferenceWorld}},
    {"turbulence on three axes", {.turbulence_x = 7, .turbulence_y = 7, .turbulence_z = 7}},
    {"turbulence on one axis", {.turbulence_y = -1e-3f}},
    {"turbulence with an empty range", {.turbulence_x = 1e-30f}, [](SmokeInstance& i) { i.abs_scale.x = 1e-30f; }},
    {"colours from the arrays", {.use_array = 1}},
    {"along the path", {.rot_follow_path = 1, .wind_force = 2}},
    {"along the path, facing the camera",
     {.rot_follow_path = 1},
     [](SmokeInstance& i) { i.draw_mode = kDrawLocalBillboard; }},
    {"wind from an image, along the path",
     {.rot_follow_path = 1,
      .turbulence_x = 90,
      .turbulence_y = 40,
      .turbulence_z = 2,
      .wind_force = 30,
      .use_wind_image = 1}},
    {"wind from an image without extent, in world coordinates",
     {.wind_force = 30, .reference = kReferenceWorld, .use_wind_image = 1},
     [](SmokeInstance& i) { set_rect(i.wind_source, 5, -40, 5, 30); }},
    {"wind from an image that is gone",
     {.wind_force = 30, .use_wind_image = 1},
     [](SmokeInstance& i) { i.wind_source.image = -1; }},
    {"death outside an outline", {.spawn_type = kSpawnContainer, .life_time_scale = 40}},
    {"death where a plug-in draws the answer",
     {.spawn_type = kSpawnContainer, .turbulence_x = 3, .turbulence_y = 3, .life_time_scale = 1},
     [](SmokeInstance& i) { i.container_source.plugin_mode = 1; }},
    {"death off a mask", {.spawn_type = kSpawnImage, .life_time_scale = 1}},
    {"a consumer", {.turbulence_x = 1, .life_time_scale = 50}, [](SmokeInstance& i) { i.consumer_attached = 1; }},
    {"a consumer that owns the colour", {}, [](SmokeInstance& i) { i.consumer_attached = i.consumer_owns_colour = 1; }},
    {"a step of time 0", {}, [](SmokeInstance& i) { i.time_step = 0; }},
};

void apply(const Setting& setting, SmokeInstance& instance) {
    instance.parameters = setting.slots;
    if (setting.slots.life_time_scale == 0) instance.parameters.life_time_scale = 100;
    setting.change(instance);
}

/// All of a record but the links, and what lies between fields.
std::string bytes_of(const Particle& p) {
    const auto bytes = reinterpret_cast<const char*>(&p);
    std::string text(bytes, offsetof(Particle, color) + sizeof p.color);
    text.append(bytes + offsetof(Particle, alpha), bytes + offsetof(Particle, reserved));
    return text + char(p.claimed) + char(p.released);
}

/// Positions of a list's records in the array that holds them, backwards links checked.
std::vector<std::ptrdiff_t> order_of(const Smoke& smoke, const Particle* head) {
    std::vector<std::ptrdiff_t> order;
    const Particle* before = nullptr;
    for (const Particle* p = head; p != nullptr; before = p, p = p->next) {
        EXPECT_EQ(p->prev, before);
        order.push_back(p - smoke.records.data());
    }
    return order;
}

void expect_alike(const Smoke& fast, const Smoke& simple) {
    EXPECT_EQ(order_of(fast, fast.instance.active_head), order_of(simple, simple.instance.active_head));
    EXPECT_EQ(order_of(fast, fast.instance.inactive_head), order_of(simple, simple.instance.inactive_head));
    for (size_t i = 0; i < fast.records.size(); ++i) {
        const Particle& a = fast.records[i];
        const Particle& b = simple.records[i];
        ASSERT_TRUE(bytes_of(a) == bytes_of(b))
            << "record " << i << ": x " << a.position.x << " and " << b.position.x << ", age " << a.age << " and "
            << b.age << ", alpha " << a.alpha << " and " << b.alpha << ", path angle " << a.path_angle << " and "
            << b.path_angle;
    }
}

void expect_side_array_follows(const Smoke& smoke) {
    const ActiveRecords active = active_records(smoke.instance);
    ASSERT_NE(active.records, nullptr);
    int32_t left = active.count;
    for (const Particle* p = smoke.instance.active_head; p != nullptr; p = p->next) {
        ASSERT_GT(left, 0);
        ASSERT_EQ(active.records[--left], p);
    }
    EXPECT_EQ(left, 0);
}

class Step : public testing::TestWithParam<std::tuple<Setting, bool>> {};

TEST_P(Step, IsThatOfItsRules) {
    const auto& [setting, has_array] = GetParam();
    const Host host;
    std::vector<Vector3> ring;
    for (int k = 0; k < 40; ++k)
        ring.push_back({static_cast<float>(k % 2 ? 50 : 20) * std::cos(static_cast<float>(k)),
                        static_cast<float>(k % 2 ? 50 : 20) * std::sin(static_cast<float>(k)), 0});
    const OutlineSource outline({ring, {{-60, -60, 0}, {-30, -60, 0}, {-30, 60, 0}}}, 0);
    const RandomSeed first;
    for (uint32_t seed = first.value; seed < first.value + 20; ++seed) {
        Smoke fast(seed, host, outline);
        Smoke simple(seed, host, outline);
        apply(setting, fast.instance);
        apply(setting, simple.instance);
        if (has_array) {
            fast.instance.caches = &fast.caches;
            ASSERT_TRUE(fast.caches.active.records.reserve(2 * kRecords));
            fast.caches.active.mirrors_links = false;
        }
        for (int step = 0; step < kSteps; ++step) {
            std::srand(seed);
            const Bounds fast_bounds = move_particles(fast.instance);
            const int next_draw = std::rand();
            std::srand(seed);
            const Bounds bounds = plain::move_particles(simple.instance);
            EXPECT_EQ(next_draw, std::rand());
            EXPECT_EQ(0, std::memcmp(&fast_bounds, &bounds, sizeof bounds));
            expect_alike(fast, simple);
            if (has_array) expect_side_array_follows(fast);
            if (HasFailure()) return;
        }
    }
}

std::string name_of(const testing::TestParamInfo<std::tuple<Setting, bool>>& info) {
    std::string name = std::get<0>(info.param).name;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name + (std::get<1>(info.param) ? "_by_the_array" : "_by_the_links");
}

INSTANTIATE_TEST_SUITE_P(Settings, Step, testing::Combine(testing::ValuesIn(kSettings), testing::Bool()), name_of);

}  // namespace
}  // namespace tovu
