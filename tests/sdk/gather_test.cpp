// The sample consumer on the Stage with the real smoke: its effect on the particles, and the protocol when smoke, shape
// or consumer is removed.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "expect.h"
#include "stage/plugins/instance.h"
#include "stage/plugins/parameters.h"
#include "stage/scene/geometry.h"
#include "test_host.h"

namespace tovu {
namespace {

using stage::ParameterValues;
using testing::IsEmpty;
using Records = std::vector<Particle*>;

// A square of side 100 about (0, 200, 0) in its container's coordinates, as one closed outline.
const std::vector<Vector3> kSquare{{-50, 150, 0}, {50, 150, 0}, {50, 250, 0}, {-50, 250, 0}};

struct Scene : TestHost {
    SmokeHandle smoke;
    int32_t target = -1;
    int32_t consumer = -1;

    // Holds all particles from the first frame on, until "hold_time" becomes 0; releases them without a push.
    explicit Scene(const ParameterValues& consumer_values = {}, const ParameterValues& smoke_values = {},
                   bool consumer_first = false) {
        if (consumer_first) consumer = stage::add_container(stage(), "gather");
        smoke = add_smoke(with({{"number_of_particles", 200}, {"birth_rate", 100.0}}, smoke_values));
        if (!consumer_first) consumer = stage::add_container(stage(), "gather");
        target = add_outlines("word", {{kSquare}});
        const ParameterValues at_once{{"smoke_container", "smoke"},
                                      {"target_container", "word"},
                                      {"start_delay", 0.0},
                                      {"gather_time", 0.0},
                                      {"hold_time", 1000.0},
                                      {"release_time", 0.0},
                                      {"blow_x", 0.0},
                                      {"blow_y", 0.0},
                                      {"strength", 20.0}};
        add_instance(consumer, TOVU_GATHER_PLUGIN, with(at_once, consumer_values));
    }
    void run_seconds(double seconds) { run_frames(static_cast<int>(seconds * 50)); }
    bool is_attached(SmokeHandle to) { return block(to).consumer_attached != 0; }
    int live() { return active_count(smoke); }
    int count(auto&& predicate) {
        const Records list = active(smoke);
        return static_cast<int>(
            std::count_if(list.begin(), list.end(), [&](const Particle* p) { return predicate(*p); }));
    }
    int held() {
        return count([](const Particle& p) { return p.claimed > 0; });
    }
    int free() {
        return count([](const Particle& p) { return p.claimed == 0 && p.released; });
    }
    int coloured(std::array<uint8_t, 3> rgb) {
        return count([rgb](const Particle& p) { return std::equal(rgb.begin(), rgb.end(), p.color); });
    }
    // Expects that no record is lost and that none is on the deleted list.
    void expect_whole_pool(int size) {
        EXPECT_EQ(size, active(smoke).size() + inactive(smoke).size());
        EXPECT_EQ(size, block(smoke).particle_count);
        EXPECT_THAT(deleted(smoke), IsEmpty());
    }
};

/// Mean distance of the smoke's live particles to the target's square, in the target's coordinates.
double mean_distance(Scene& scene, bool world) {
    stage::Matrix to_target;
    _api__container_get_inverse_matrix(scene.target, to_target.data());
    const stage::Matrix to_world = stage::world_matrix(scene.stage(), scene.smoke.container);
    double sum = 0;
    for (const Particle* particle : scene.active(scene.smoke)) {
        const Vector3 placed = world ? particle->position : tovu::transform_point(to_world, particle->position);
        const Vector3 p = tovu::transform_point(to_target, placed);
        sum += std::hypot(std::max(std::abs(p.x), std::abs(p.y - 200)) - 50, p.z);
    }
    return sum / scene.live();
}

TEST(Gather, PullsSmokeOntoTheOutline) {
    const stage::Placement smoke_turned{{30, -20, 5}, {20, 30, 40}, {2, 2, 2}};
    const stage::Placement target_turned{{100, 0, -50}, {0, 60, 10}, {1, 2, 1}};
    const struct {
        const char* name;
        const char* reference;
        stage::Placement smoke, target;
        bool consumer_first;  // placed before the smoke in the tree, it runs first in every frame
    } rows[] = {{"the consumer runs first", "Local", {}, {}, true},
                {"turned, scaled and moved", "Local", smoke_turned, target_turned, false},
                {"in the world", "World", smoke_turned, target_turned, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Scene scene({{"smoke_reference", row.reference}, {"start_delay", 1.0}, {"strength", 6.0}},
                    {{"reference", row.reference}}, row.consumer_first);
        scene.container(scene.smoke).placement = row.smoke;
        scene.container(scene.target).placement = row.target;
        scene.run_seconds(1);
        const bool world = std::string_view(row.reference) == "World";
        const double before = mean_distance(scene, world);
        scene.run_seconds(4);
        EXPECT_GT(before, 50);
        EXPECT_LT(mean_distance(scene, world), before / 20);
        EXPECT_EQ(200, scene.held());
        EXPECT_THAT(scene.complaints(), IsEmpty());
    }
}

// A square with a square hole, joined to one outline by a cut. Without the rule for cuts, the cut would get 7 of the
// 200 particles. Counts may differ from an even share by 4.
TEST(Gather, SpreadsParticlesEvenlyButLeavesTheCutOfAHoleFree) {
    Scene scene;
    stage::Mesh mesh{kSquare};
    for (const Vector3 v : {kSquare[0], {-40, 160, 0}, {-40, 240, 0}, {40, 240, 0}, {40, 160, 0}, {-40, 160, 0}})
        mesh.vertices.push_back(v);
    stage::set_mesh_geometry(scene.stage(), scene.target, {mesh});
    scene.run_seconds(5);
    const auto around = [&scene](float x, float y, float reach_x, float reach_y) {
        return scene.count([=](const Particle& p) {
            return std::abs(p.position.x - x) < reach_x && std::abs(p.position.y - y) < reach_y;
        });
    };
    EXPECT_EQ(0, around(-45, 155, 4, 4)) << "the cut";
    EXPECT_NEAR(200 * 76 / 720.0, around(40, 200, 2, 38), 4) << "right of the hole";
    EXPECT_NEAR(200 * 96 / 720.0, around(0, 150, 48, 2), 4) << "below";
    EXPECT_NEAR(200 * 96 / 720.0, around(-50, 200, 2, 48), 4) << "left";
}

// Particles held beyond their life of 3 s stay at 30 percent of it, in age and size (from 5 to 15).
TEST(Gather, RunsThroughItsStages) {
    Scene scene(
        {{"start_delay", 1.0}, {"gather_time", 1.0}, {"hold_time", 4.0}, {"release_time", 1.0}, {"free_green", 150}});
    scene.run_seconds(1);
    EXPECT_EQ(0, scene.held());
    EXPECT_EQ(scene.live(), scene.free());
    EXPECT_EQ(scene.live(), scene.coloured({200, 150, 200}));
    for (int i = 0; i < 60; ++i) stage::new_frame(scene.stage());  // the last frame again
    EXPECT_EQ(0, scene.held());
    scene.run_seconds(5);
    EXPECT_EQ(200, scene.held());
    EXPECT_EQ(200, scene.coloured({255, 190, 90}));
    for (const Particle* p : scene.active(scene.smoke)) {
        EXPECT_NEAR(0.3 * 3, p->age, 0.021);
        EXPECT_NEAR(5 + 0.3 * 10, p->size_x, 0.2);
    }
    scene.run_seconds(0.5);  // half of the release time: held places lie to the right of the middle
    EXPECT_EQ(0, scene.count([](const Particle& p) { return p.claimed > 0 && p.position.x < -5; }));
    EXPECT_GT(scene.held(), 20);
    EXPECT_GT(scene.free(), 20);
    scene.run_seconds(0.52);
    EXPECT_EQ(0, scene.held());
    ASSERT_TRUE(stage::press_button(scene.stage(), scene.consumer, "restart"));
    scene.run_seconds(3);
    EXPECT_EQ(scene.live(), scene.held());
}

TEST(Gather, PushesReleasedParticles) {
    Scene scene({{"blow_x", 100.0}, {"blow_y", -50.0}, {"blow_spread", 0.0}});
    scene.run_seconds(5);
    scene.set(scene.consumer, "hold_time", 0.0);
    scene.run_frames(1);
    EXPECT_EQ(200, scene.free());
    for (const Particle* p : scene.active(scene.smoke)) expect_near({2, -1, 0}, p->velocity, 0.05);
}

TEST(GatherProtocol, SurvivesTheShapeAndTheSmokeAndChangesOverToAnother) {
    Scene scene;
    scene.run_seconds(1);
    stage::remove_geometry(scene.stage(), scene.target);
    scene.run_frames(2);
    EXPECT_EQ(scene.live(), scene.free());
    stage::set_mesh_geometry(scene.stage(), scene.target, {{kSquare}});
    scene.run_frames(2);
    EXPECT_EQ(scene.live(), scene.held());
    stage::remove_container(scene.stage(), scene.smoke.container);
    scene.run_seconds(1);
    scene.smoke = scene.add_smoke();  // has the same name
    scene.run_seconds(1);
    EXPECT_TRUE(scene.is_attached(scene.smoke));
    EXPECT_GT(scene.held(), scene.live() - 3) << "particles born in this frame are not claimed yet";
    const SmokeHandle other = scene.add_smoke({}, "other");
    scene.set(scene.consumer, "smoke_container", "other");
    scene.run_seconds(1);
    EXPECT_FALSE(scene.is_attached(scene.smoke));
    EXPECT_TRUE(scene.is_attached(other));
    EXPECT_THAT(scene.complaints(), IsEmpty());
}

TEST(GatherProtocol, DetachesWhenItIsRemovedFirst) {
    for (const bool whole_container : {true, false}) {
        Scene scene;
        scene.run_seconds(1);
        scene.set(scene.smoke, "number_of_particles", 50);  // held particles leave the pool in the same frame
        stage::new_frame(scene.stage());
        (whole_container ? stage::remove_container : stage::remove_geometry)(scene.stage(), scene.consumer);
        EXPECT_FALSE(scene.is_attached(scene.smoke));
        EXPECT_EQ(0, scene.live());
        for (const Particle* p : scene.inactive(scene.smoke)) EXPECT_EQ(0, p->claimed);
        scene.run_seconds(1);
        EXPECT_EQ(50, scene.live());
        scene.expect_whole_pool(50);
        EXPECT_THAT(scene.complaints(), IsEmpty());
    }
}

TEST(GatherProtocol, ReleasesRecordsThatLeaveThePool) {
    for (const bool consumer_first : {false, true}) {
        Scene scene({}, {}, consumer_first);
        scene.run_seconds(3);
        ASSERT_EQ(200, scene.held());
        const Records before = scene.active(scene.smoke);
        for (const int size : {60, 150, 0, 200, 199}) {
            scene.set(scene.smoke, "number_of_particles", size);
            scene.run_frames(2);  // one clears `claimed`, one frees
            scene.expect_whole_pool(size);
            if (size == 60) {
                EXPECT_EQ(Records(before.end() - 60, before.end()), scene.active(scene.smoke));
            }
        }
    }
}

// The numbers of the smoke's particles stay finite with any bits in the slots.
TEST(GatherProtocol, NoSlotSpoilsTheSmoke) {
    for (const uint32_t bits : {0x7FC00000u, 0x7F800000u, 0xFF800000u, 0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        Scene scene;
        const auto& parameters = stage::plugin(stage::instance_of(scene.stage(), scene.consumer)->plugin).parameters;
        for (const stage::ParameterInfo& parameter : parameters)
            if (parameter.kind != stage::ParameterKind::kContainer && parameter.name != "start_delay")
                stage::set_slot_bits(scene.stage(), scene.consumer, parameter.index, bits);
        for (const double start_delay : {0.0, 1000.0}) {
            scene.set(scene.consumer, "start_delay", start_delay);
            scene.run_seconds(1);
        }
        for (const Particle* p : scene.active(scene.smoke))
            EXPECT_TRUE(std::isfinite(p->position.x + p->velocity.x + p->age + p->size_x)) << std::hex << bits;
        scene.expect_whole_pool(200);
    }
}

}  // namespace
}  // namespace tovu
