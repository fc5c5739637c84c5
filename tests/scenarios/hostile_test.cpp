// The smoke recovers from invalid bits in slots and from wrong answers of the host.
#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "random_seed.h"
#include "render_host.h"
#include "stage/plugins/parameters.h"

namespace tovu {
namespace {

const stage::ParameterValues kBusy = {
    {"number_of_particles", 30},  {"birth_rate", 200.0},     {"life_time", 0.3},
    {"life_time_spread", 20.0},   {"spawn_range_x", 40.0},   {"spawn_range_y", 30.0},
    {"spawn_range_z", 20.0},      {"gravity", 3.0},          {"turbulence_x", 2.0},
    {"turbulence_y", 2.0},        {"turbulence_z", 2.0},     {"wind_force", 9.0},
    {"wind_rot_x", 30.0},         {"wind_rot_z", 40.0},      {"air_resistance", 20.0},
    {"rot_follow_path", true},    {"reference", 1},          {"spawn_cont_name", "shape"},
    {"spawn_image", "mask"},      {"wind_image", "mask"},    {"wind_image_range_x", 60.0},
    {"wind_image_range_y", 60.0}, {"life_time_scale", 60.0}, {"spawn_type", 2}};

/// A smoke that uses every service of the host.
struct Busy {
    Busy() {
        host.add_outlines("shape", {{{{0, 0, 0}, {30, 0, 0}, {0, 30, 5}}}});
        stage::add_image(host.stage(), "mask", 2, 2, GL_RGB, {255, 3, 9, 0, 9, 9, 200, 80, 20, 90, 1, 2});
        smoke = host.add_smoke(kBusy);
    }
    void set_bits(int32_t index, uint32_t bits) { stage::set_slot_bits(host.stage(), smoke.container, index, bits); }
    void run(int frames) {
        for (int i = 0; i < frames; ++i) {
            host.run_frames(1);
            host.render(smoke);
        }
    }
    std::vector<Particle> records() {
        std::vector<Particle> copies;
        for (const auto& list : {host.active(smoke), host.inactive(smoke)})
            for (const Particle* p : list) copies.push_back(*p);
        return copies;
    }
    RenderHost host;
    SmokeHandle smoke;
};

TEST(HostileSlots, ReadAsTheStatedValue) {
    struct Row {
        const char* parameter;
        uint32_t bits, stands_for;
    };
    std::vector<Row> rows = {{"number_of_particles", 0x80000000u, 0},
                             {"birth_rate", 0x80000000u, 0},
                             {"number_of_particles", 0x7FFFFFFFu, 25000},
                             {"spawn_type", 4, 0},
                             {"spawn_type", 0xFFFFFFFFu, 0},
                             {"reference", 2, 0},
                             {"billboard", 7, 0},
                             {"spawn_cont_ref_plane", 9, 1},
                             {"spawn_cont_coord", 0xFFFFFFFFu, 1},
                             {"freeze_motion", 2, 1},
                             {"use_array", 0x80000000u, 1},
                             {"rot_follow_path", 0x100, 1},
                             {"use_wind_image", 0xFFFFFFFFu, 1},
                             {"initial_align_to_spawn_center", 2, 1}};
    const TestHost registered;
    const stage::Plugin& plugin = *stage::loaded_plugins().front();
    for (const stage::ParameterInfo& parameter : plugin.parameters) {
        if (parameter.kind != stage::ParameterKind::kFloat) continue;
        const auto initial = std::bit_cast<uint32_t>(static_cast<float>(std::get<double>(parameter.initial)));
        for (const uint32_t bits : {0x7F800000u, 0xFF800000u, 0x7FC00000u, 0xFFFFFFFFu})
            rows.push_back({parameter.name.c_str(), bits, initial});
    }
    ASSERT_LT(13u, rows.size()) << "no parameter is a float";
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.parameter << " holds " << std::hex << row.bits);
        std::vector<Particle> records[2];
        float due[2];
        for (const bool hostile : {false, true}) {
            Busy busy;
            busy.set_bits(stage::find_parameter(plugin, row.parameter)->index, hostile ? row.bits : row.stands_for);
            busy.run(4);
            records[hostile] = busy.records();
            due[hostile] = busy.host.block(busy.smoke).birth_accumulator;
        }
        EXPECT_EQ(due[0], due[1]);
        ASSERT_EQ(records[0].size(), records[1].size());
        for (size_t i = 0; i < records[0].size() && !HasFailure(); ++i) expect_same(records[0][i], records[1][i]);
    }
}

TEST(HostileSlots, AnyBitsInEverySlot) {
    const RandomSeed seed;
    std::mt19937 generator(seed.value);
    const uint32_t telling[] = {0,           1,           2,           3,           0xFFFFFFFFu, 0x80000000u,
                                0x7FFFFFFFu, 0x7F800000u, 0xFF800000u, 0x7FC00000u, 0x7F7FFFFFu, 0xFF7FFFFFu,
                                0x00000001u, 0x80000001u, 0x3F800000u, 0x42C80000u, 0x4F000000u};
    Busy busy;
    const stage::Plugin& plugin = stage::plugin(busy.host.smoke_plugin());
    const SmokeInstance& block = busy.host.block(busy.smoke);
    for (int round = 0; round < 400; ++round) {
        for (const stage::ParameterInfo& parameter : plugin.parameters) {
            if (parameter.kind >= stage::ParameterKind::kString || generator() % 3 == 0) continue;
            uint32_t bits = static_cast<uint32_t>(generator());
            if (generator() % 2) bits = telling[generator() % std::size(telling)];
            if (parameter.index == kIndex_number_of_particles && round % 20 != 0)
                bits %= 300;  // a full pool in one round of 20
            busy.set_bits(parameter.index, bits);
        }
        if (round % 7 == 0) busy.host.block(busy.smoke).birth_accumulator = 1;
        busy.run(3);
        const int64_t wanted = std::clamp(block.parameters.number_of_particles, 0, 25000);
        ASSERT_EQ(wanted, block.particle_count) << "round " << round;
        ASSERT_EQ(static_cast<size_t>(wanted),
                  busy.host.active(busy.smoke).size() + busy.host.inactive(busy.smoke).size());
    }
    EXPECT_TRUE(busy.host.complaints().empty()) << busy.host.complaints().front();
}

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinite = std::numeric_limits<float>::infinity();

using Overrides = stage::Overrides;

auto vector_of(float value) {
    return [value](int32_t, float* x, float* y, float* z) { *x = *y = *z = value; };
}
auto frames_of(double value) {
    return [value](double* seconds) { *seconds = value; };
}
void put_odd_matrix(int32_t, float* matrix) {
    for (int i = 0; i < 16; ++i) matrix[i] = i % 2 ? kNan : -kInfinite;
}
void record_at(Overrides& o, float seconds) {
    o.is_post_recording = [](uint8_t* recording) { *recording = 1; };
    o.post_current_time = [seconds](float* time) { *time = seconds; };
}
void say_nothing_of_containers(Overrides& o) {
    o.container_get_absolute_position = o.container_get_absolute_rotation =
        o.container_get_absolute_scaling = [](int32_t, float*, float*, float*) {};
    o.container_get_transformation_matrix = [](int32_t, float*) {};
}
void make_containers_odd(Overrides& o) {
    o.container_get_absolute_scaling = o.container_get_absolute_rotation = vector_of(kNan);
    o.container_get_transformation_matrix = put_odd_matrix;
}
void make_camera_odd(Overrides& o) {
    o.get_camera_pan = o.get_camera_tilt = [](int32_t, float* degrees) { *degrees = kNan; };
    o.get_camera_view_matrix = put_odd_matrix;
}
void make_images_huge(Overrides& o) {
    o.get_image_size = [](int32_t, int32_t* width, int32_t* height) { *width = *height = 2147483647; };
    o.get_image_data = [](int32_t, uint8_t** pixels) { *pixels = nullptr; };
}
int32_t one_in_two(int32_t) {
    static int asked = 0;
    return ++asked % 2;
}
void put_odd_vertices(int32_t, int32_t cursor, float* x, float* y, float* z) {
    *x = *y = *z = cursor % 3 == 0 ? kNan : cursor % 3 == 1 ? kInfinite : -kInfinite;
}

const struct {
    const char* name;
    void (*arrange)(Overrides&);
} kWrongAnswers[] = {
    {"nothing at all about containers", say_nothing_of_containers},
    {"a container of size 0", [](Overrides& o) { o.container_get_absolute_scaling = vector_of(0); }},
    {"a container's placement is not a number", make_containers_odd},
    {"a container at infinity", [](Overrides& o) { o.container_get_absolute_position = vector_of(kInfinite); }},
    {"a camera's angles are not numbers", make_camera_odd},
    {"no camera", [](Overrides& o) { o.get_cameraid = [](int32_t, const char*, int32_t) { return -1; }; }},
    {"objects that come and go", [](Overrides& o) { o.object_valid = one_in_two; }},
    {"no geometry", [](Overrides& o) { o.container_get_geometry = [](int32_t, int32_t* g) { *g = 12345; }; }},
    {"vertices that are infinite or not numbers", [](Overrides& o) { o.geomod_get_vertex = put_odd_vertices; }},
    {"the largest image without pixels", make_images_huge},
    {"a frame period that is not a number", [](Overrides& o) { o.refreshrate = frames_of(std::nan("")); }},
    {"an infinite frame period", [](Overrides& o) { o.refreshrate = frames_of(HUGE_VAL); }},
    {"a negative frame period", [](Overrides& o) { o.refreshrate = frames_of(-1); }},
    {"a recording time that is not a number", [](Overrides& o) { record_at(o, kNan); }},
    {"an infinite recording time", [](Overrides& o) { record_at(o, kInfinite); }},
};

TEST(HostileHost, WrongAnswersHaveNoLastingEffect) {
    for (const auto& wrong : kWrongAnswers)
        for (int spawn_type = 0; spawn_type < 4; ++spawn_type) {
            SCOPED_TRACE(testing::Message() << wrong.name << ", spawn type " << spawn_type);
            Busy busy;
            busy.host.set(busy.smoke, "spawn_type", spawn_type);
            busy.host.set(busy.smoke, "use_wind_image", spawn_type % 2 == 1);
            busy.run(2);
            wrong.arrange(busy.host.stage().overrides);
            busy.run(6);
            busy.host.stage().overrides = {};
            for (const int32_t source : {kIndex_spawn_image, kIndex_wind_image})
                stage::notify_changed(busy.host.stage(), busy.smoke.container, source);
            busy.host.press(busy.smoke, "reset");
            busy.run(2);
            EXPECT_GT(busy.host.active_count(busy.smoke), 0) << "births go on";
            for (const Particle* p : busy.host.active(busy.smoke)) {
                EXPECT_TRUE(std::isfinite(p->position.x + p->velocity.x + p->size_x + p->life));
                EXPECT_LT(p->age, 0.05f);
            }
            EXPECT_TRUE(std::isfinite(busy.host.bounding_box(busy.smoke).minimum.x));
            EXPECT_LT(busy.host.block(busy.smoke).birth_accumulator, 0.1f) << "no time is due that has not passed";
        }
}

}  // namespace
}  // namespace tovu
