// The sample consumer on the Stage with the real smoke: what it does to the particles, and that it keeps to the
// protocol whichever of smoke, shape and consumer goes first.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "stage/plugins/instance.h"
#include "stage/plugins/parameters.h"
#include "stage/scene/geometry.h"
#include "test_host.h"

namespace tovu {
namespace {

using stage::ParameterValues;
using testing::IsEmpty;

constexpr int kFramesPerSecond = 50;

// A square of side 100 about (0, 200, 0) in its container's coordinates, as one closed outline.
const std::vector<Vector3> kSquare{{-50, 150, 0}, {50, 150, 0}, {50, 250, 0}, {-50, 250, 0}};

struct Scene : TestHost {
    SmokeHandle smoke;
    int32_t target = -1;
    int32_t consumer = -1;

    // All pulled at once from the first frame on, held in place, let go all at once without a push.
    explicit Scene(const ParameterValues& consumer_values = {}, const ParameterValues& smoke_values = {},
                   bool consumer_first = false) {
        if (consumer_first) consumer = stage::add_container(stage(), "gather");
        smoke = add_smoke(smoke_values.empty() ? usual_smoke() : smoke_values);
        if (!consumer_first) consumer = stage::add_container(stage(), "gather");
        target = add_outlines("word", {{kSquare}});
        ParameterValues values{{"smoke_container", std::string("smoke")},
                               {"target_container", std::string("word")},
                               {"mode", std::string("Gather")},
                               {"gather_time", 0.0},
                               {"release_time", 0.0},
                               {"blow_x", 0.0},
                               {"blow_y", 0.0}};
        values.insert(values.end(), consumer_values.begin(), consumer_values.end());
        const auto plugin = stage::load_plugin(stage(), TOVU_GATHER_PLUGIN);
        if (!plugin) throw std::runtime_error(plugin.error().message);
        const auto geometry = stage::add_instance(stage(), consumer, *plugin, values);
        if (!geometry) throw std::runtime_error(geometry.error().message);
    }

    static ParameterValues usual_smoke() {
        return {{"number_of_particles", 200}, {"birth_rate", 100.0}, {"life_time", 3.0}};
    }

    void set_consumer(std::string_view parameter, const stage::ParameterValue& value) {
        const auto done = stage::set_parameter(stage(), consumer, parameter, value);
        if (!done) throw std::runtime_error(done.error().message);
    }
};

int count(const std::vector<Particle*>& list, auto&& predicate) {
    return static_cast<int>(std::count_if(list.begin(), list.end(), [&](const Particle* p) { return predicate(*p); }));
}
bool is_held(const Particle& p) {
    return p.claimed > 0;
}
bool is_free(const Particle& p) {
    return p.claimed < 0 || (p.claimed == 0 && p.released);
}

// Of each record exactly one list has it, and the pool is whole.
void expect_whole_pool(TestHost& host, SmokeHandle smoke, int size) {
    EXPECT_EQ(size, host.active(smoke).size() + host.inactive(smoke).size());
    EXPECT_EQ(size, host.block(smoke).particle_count);
}

double distance_to_edge(Vector3 p, Vector3 a, Vector3 b) {
    const double dx = b.x - a.x, dy = b.y - a.y, dz = b.z - a.z;
    const double t = ((p.x - a.x) * dx + (p.y - a.y) * dy + (p.z - a.z) * dz) / (dx * dx + dy * dy + dz * dz);
    const double s = std::clamp(t, 0.0, 1.0);
    return std::hypot(p.x - a.x - s * dx, p.y - a.y - s * dy, p.z - a.z - s * dz);
}

/// Mean distance of the smoke's live particles to the target's square, in world units.
double mean_distance(Scene& scene) {
    const bool world = std::get<std::string>(scene.get(scene.smoke, "reference")) == "World";
    const stage::Matrix to_world = stage::world_matrix(scene.stage(), scene.smoke.container);
    const stage::Matrix target = stage::world_matrix(scene.stage(), scene.target);
    double sum = 0;
    const std::vector<Particle*> list = scene.active(scene.smoke);
    for (const Particle* particle : list) {
        const Vector3 p = world ? particle->position : stage::transform_point(to_world, particle->position);
        double nearest = std::numeric_limits<double>::infinity();
        for (size_t i = 0; i < kSquare.size(); ++i)
            nearest = std::min(nearest, distance_to_edge(p, stage::transform_point(target, kSquare[i]),
                                                         stage::transform_point(target, kSquare[(i + 1) % 4])));
        sum += nearest;
    }
    return sum / static_cast<double>(list.size());
}

struct PlaceCase {
    const char* name;
    const char* reference;
    stage::Placement smoke;
    stage::Placement target;
    bool consumer_first;  // before the smoke in the tree, so that it runs before it in every frame
};
const PlaceCase kPlaces[] = {
    {"both at the origin", "Local", {}, {}, false},
    {"the consumer runs first", "Local", {}, {}, true},
    {"turned, scaled and moved",
     "Local",
     {{30, -20, 5}, {20, 30, 40}, {2, 2, 2}},
     {{100, 0, -50}, {0, 60, 10}, {1, 2, 1}},
     false},
    {"in the world", "World", {{30, -20, 5}, {20, 30, 40}, {2, 2, 2}}, {{100, 0, -50}, {0, 60, 10}, {1, 2, 1}}, false},
};

TEST(Gather, PullsSmokeOntoTheOutline) {
    for (const PlaceCase& c : kPlaces) {
        SCOPED_TRACE(c.name);
        Scene scene({{"smoke_reference", std::string(c.reference)}, {"mode", std::string("Release")}},
                    {{"number_of_particles", 200}, {"birth_rate", 100.0}, {"reference", std::string(c.reference)}},
                    c.consumer_first);
        scene.container(scene.smoke).placement = c.smoke;
        scene.container(scene.target).placement = c.target;
        scene.run_frames(kFramesPerSecond);
        const double before = mean_distance(scene);
        scene.set_consumer("mode", std::string("Gather"));
        scene.run_frames(4 * kFramesPerSecond);
        EXPECT_GT(before, 50);
        EXPECT_LT(mean_distance(scene), before / 20);
        EXPECT_EQ(200, count(scene.active(scene.smoke), is_held));
        EXPECT_THAT(scene.complaints(), IsEmpty());
    }
}

// Each side of the square is a quarter of the outline; multiples of the golden ratio miss a quarter of 200 by few.
TEST(Gather, SpreadsParticlesEvenlyAlongTheOutline) {
    Scene scene({{"strength", 20.0}});
    scene.run_frames(5 * kFramesPerSecond);
    const std::vector<Particle*> list = scene.active(scene.smoke);
    ASSERT_EQ(200, list.size());
    const auto near_side = [&](auto&& distance) {
        return count(list, [&](const Particle& p) { return distance(p) < 1; });
    };
    EXPECT_NEAR(50, near_side([](const Particle& p) { return std::abs(p.position.y - 150); }), 4);
    EXPECT_NEAR(50, near_side([](const Particle& p) { return std::abs(p.position.y - 250); }), 4);
    EXPECT_NEAR(50, near_side([](const Particle& p) { return std::abs(p.position.x - 50); }), 4);
    EXPECT_NEAR(50, near_side([](const Particle& p) { return std::abs(p.position.x + 50); }), 4);
}

// A square with a square hole, joined as one outline by a cut from corner to corner: none of 200 lies on the cut, which
// at twice 14 of 748 units would have drawn seven.
TEST(Gather, LeavesTheCutOfAHoleFree) {
    Scene scene({{"strength", 20.0}});
    const std::vector<Vector3> outer = kSquare;
    const std::vector<Vector3> hole{{-40, 160, 0}, {-40, 240, 0}, {40, 240, 0}, {40, 160, 0}};
    stage::Mesh mesh{outer};
    mesh.vertices.push_back(outer[0]);
    mesh.vertices.insert(mesh.vertices.end(), hole.begin(), hole.end());
    mesh.vertices.push_back(hole[0]);
    stage::set_mesh_geometry(scene.stage(), scene.target, {mesh});
    scene.run_frames(5 * kFramesPerSecond);
    const auto inside_cut = [](const Particle& p) {
        return std::abs(p.position.x + 45) < 4 && std::abs(p.position.y - 155) < 4;
    };
    EXPECT_EQ(200, scene.active_count(scene.smoke));
    EXPECT_EQ(0, count(scene.active(scene.smoke), inside_cut));
    const auto right_of_hole = [](const Particle& p) {
        return std::abs(p.position.x - 40) < 2 && std::abs(p.position.y - 200) < 38;
    };
    EXPECT_NEAR(200 * 76 / 720.0, count(scene.active(scene.smoke), right_of_hole), 4);
}

// Held far beyond their life time they neither die nor grow past the size that befits their held age: 30 percent of the
// way from 5 to 15, and as much as a frame adds.
TEST(Gather, KeepsHeldParticlesYoung) {
    Scene scene;
    scene.run_frames(20 * kFramesPerSecond);
    const std::vector<Particle*> list = scene.active(scene.smoke);
    EXPECT_EQ(200, list.size());
    for (const Particle* p : list) {
        EXPECT_NEAR(0.3 * 3, p->age, 0.021);
        EXPECT_NEAR(5 + 0.3 * 10, p->size_x, 0.2);
        EXPECT_GT(p->alpha, 100);
    }
}

TEST(Gather, LetsGoWithAPush) {
    Scene scene({{"blow_x", 100.0}, {"blow_y", -50.0}, {"blow_spread", 0.0}, {"strength", 20.0}});
    scene.run_frames(5 * kFramesPerSecond);
    scene.set_consumer("mode", std::string("Release"));
    scene.run_frames(1);
    const std::vector<Particle*> list = scene.active(scene.smoke);
    ASSERT_EQ(200, list.size());
    for (const Particle* p : list) {
        EXPECT_EQ(0, p->claimed);
        EXPECT_EQ(1, p->released);
        EXPECT_NEAR(100 / kFramesPerSecond, p->velocity.x, 0.05);
        EXPECT_NEAR(-50.0 / kFramesPerSecond, p->velocity.y, 0.05);
    }
    // They drift on and die 2.1 s later, at their life of 3 s; from then on 100 a second are born, free as without a
    // consumer, until the pool is empty again.
    scene.run_frames(4 * kFramesPerSecond + kFramesPerSecond / 2);
    const std::vector<Particle*> later = scene.active(scene.smoke);
    EXPECT_EQ(200, later.size());
    EXPECT_EQ(200, count(later, [](const Particle& p) { return is_free(p) && p.velocity.y > 0; }));
}

TEST(Gather, SweepsAlongXAndRunsByItsTimes) {
    Scene scene({{"mode", std::string("Timed")},
                 {"start_delay", 2.0},
                 {"gather_time", 1.0},
                 {"hold_time", 1.0},
                 {"release_time", 1.0},
                 {"strength", 20.0}});
    scene.run_frames(2 * kFramesPerSecond);  // the clock starts at 0 in the first frame
    EXPECT_EQ(0, scene.block(scene.smoke).consumer_attached);
    scene.run_frames(kFramesPerSecond + kFramesPerSecond / 2);
    EXPECT_EQ(1, scene.block(scene.smoke).consumer_attached);
    EXPECT_EQ(0, count(scene.active(scene.smoke), is_free));
    scene.run_frames(kFramesPerSecond);  // half way through the release
    for (const Particle* p : scene.active(scene.smoke)) {
        if (is_held(*p)) {
            EXPECT_GT(p->position.x, -5);  // its place is right of the middle, and it is nearly there
        }
    }
    EXPECT_GT(count(scene.active(scene.smoke), is_held), 20);
    EXPECT_GT(count(scene.active(scene.smoke), is_free), 20);
    scene.run_frames(kFramesPerSecond);
    EXPECT_EQ(0, count(scene.active(scene.smoke), is_held));
    ASSERT_TRUE(stage::press_button(scene.stage(), scene.consumer, "restart"));
    scene.run_frames(3 * kFramesPerSecond + kFramesPerSecond / 2);
    EXPECT_EQ(0, count(scene.active(scene.smoke), is_free));
}

TEST(Gather, TakesTheShareAndLeavesTheRestFree) {
    Scene scene({{"share", 25.0}, {"death_acceleration", 50.0}},
                {{"number_of_particles", 200}, {"birth_rate", 1e5}, {"life_time", 100.0}});
    scene.run_frames(3);
    const std::vector<Particle*> list = scene.active(scene.smoke);
    EXPECT_EQ(50, count(list, is_held));
    EXPECT_EQ(150, count(list, is_free));
    EXPECT_EQ(200, count(list, [](const Particle& p) { return p.life == 100; })) << "nobody's life is cut";
}

TEST(Gather, HandsItsSettingsToTheSmoke) {
    Scene scene({{"birth_limit", 3}, {"death_acceleration", 40.0}},
                {{"number_of_particles", 200}, {"birth_rate", 1000.0}});
    scene.run_frames(2);  // the first frame's births came before the consumer
    const int before = scene.active_count(scene.smoke);
    scene.run_frames(10);
    EXPECT_EQ(before + 30, scene.active_count(scene.smoke));
    EXPECT_EQ(40.0, std::get<double>(scene.get(scene.smoke, "life_time_scale")));
}

TEST(Gather, ColoursWhatItHoldsAndWhatIsFree) {
    Scene scene({{"set_colour", true},
                 {"colour_time", 0.2},
                 {"held_red", 250},
                 {"held_green", 10},
                 {"held_blue", 20},
                 {"free_red", 30},
                 {"free_green", 40},
                 {"free_blue", 50}},
                {{"number_of_particles", 100}, {"birth_rate", 1e5}, {"life_time", 100.0}});
    const auto all_are = [&](int red, int green, int blue) {
        return count(scene.active(scene.smoke),
                     [&](const Particle& p) { return p.color[0] == red && p.color[1] == green && p.color[2] == blue; });
    };
    scene.run_frames(2);
    const Particle& first = *scene.active(scene.smoke).front();
    // Between the two colours all channels have come as far.
    const double part = (first.color[0] - 30) / 220.0;
    EXPECT_GT(part, 0.1);
    EXPECT_LT(part, 0.9);
    EXPECT_NEAR(40 - 30 * part, first.color[1], 1);
    EXPECT_NEAR(50 - 30 * part, first.color[2], 1);
    scene.run_frames(kFramesPerSecond);
    EXPECT_EQ(100, all_are(250, 10, 20));
    scene.set_consumer("mode", std::string("Release"));
    scene.run_frames(kFramesPerSecond);
    EXPECT_EQ(100, all_are(30, 40, 50));
}

// ---- Who goes first ----

TEST(GatherProtocol, SurvivesTheSmoke) {
    Scene scene;
    scene.run_frames(kFramesPerSecond);
    ASSERT_GT(count(scene.active(scene.smoke), is_held), 50);
    ASSERT_TRUE(stage::remove_container(scene.stage(), scene.smoke.container));
    scene.run_frames(kFramesPerSecond);
    const SmokeHandle again = scene.add_smoke(Scene::usual_smoke());  // the same name: the next one to attach to
    scene.run_frames(kFramesPerSecond);
    EXPECT_EQ(1, scene.block(again).consumer_attached);
    // It runs after the consumer now: what was born in this frame, two of them, is not claimed yet.
    EXPECT_EQ(scene.active_count(again) - 2, count(scene.active(again), is_held));
    EXPECT_THAT(scene.complaints(), IsEmpty());
}

TEST(GatherProtocol, SurvivesAnotherGeometryInTheSmokesPlace) {
    Scene scene;
    scene.run_frames(kFramesPerSecond);
    stage::set_mesh_geometry(scene.stage(), scene.smoke.container, {{kSquare}});
    scene.run_frames(kFramesPerSecond);
    // A plug-in that takes the request and makes nothing of it.
    scene.set_consumer("smoke_container", std::string("gather"));
    scene.run_frames(kFramesPerSecond);
    EXPECT_THAT(scene.complaints(), IsEmpty());
}

TEST(GatherProtocol, DetachesWhenItIsRemovedFirst) {
    for (const bool whole_container : {true, false}) {
        Scene scene;
        scene.run_frames(kFramesPerSecond);
        scene.set(scene.smoke, "number_of_particles", 50);  // some of what is held leaves the pool in the same frame
        stage::new_frame(scene.stage());
        ASSERT_TRUE(whole_container ? stage::remove_container(scene.stage(), scene.consumer)
                                    : stage::remove_geometry(scene.stage(), scene.consumer));
        EXPECT_EQ(0, scene.block(scene.smoke).consumer_attached);
        EXPECT_EQ(0, scene.active_count(scene.smoke));
        EXPECT_EQ(0, count(scene.inactive(scene.smoke), [](const Particle& p) { return p.claimed != 0; }));
        EXPECT_THAT(scene.deleted(scene.smoke), IsEmpty());
        scene.run_frames(kFramesPerSecond);
        EXPECT_EQ(50, scene.active_count(scene.smoke));
        expect_whole_pool(scene, scene.smoke, 50);
        EXPECT_THAT(scene.complaints(), IsEmpty());
    }
}

TEST(GatherProtocol, LetsGoOfWhatLeavesThePool) {
    for (const bool consumer_first : {false, true}) {
        Scene scene({}, {}, consumer_first);
        scene.run_frames(3 * kFramesPerSecond);
        ASSERT_EQ(200, count(scene.active(scene.smoke), is_held));
        const std::vector<Particle*> before = scene.active(scene.smoke);
        for (const int size : {60, 150, 0, 200, 199}) {
            scene.set(scene.smoke, "number_of_particles", size);
            scene.run_frames(2);  // one to remove them and let them go, one to free them
            expect_whole_pool(scene, scene.smoke, size);
            EXPECT_THAT(scene.deleted(scene.smoke), IsEmpty());
            if (size == 60) {
                // The youngest have left; the oldest are where they were.
                EXPECT_EQ(std::vector<Particle*>(before.end() - 60, before.end()), scene.active(scene.smoke));
            }
        }
    }
}

TEST(GatherProtocol, DropsWhatItHoldsWhenTheShapeGoes) {
    Scene scene;
    scene.run_frames(3 * kFramesPerSecond);
    ASSERT_TRUE(stage::remove_geometry(scene.stage(), scene.target));
    scene.run_frames(2);
    EXPECT_EQ(0, count(scene.active(scene.smoke), is_held));
    EXPECT_EQ(scene.active_count(scene.smoke), count(scene.active(scene.smoke), is_free));
    stage::set_mesh_geometry(scene.stage(), scene.target, {{kSquare}});
    scene.run_frames(2);
    EXPECT_EQ(scene.active_count(scene.smoke), count(scene.active(scene.smoke), is_held));
    EXPECT_THAT(scene.complaints(), IsEmpty());
}

TEST(GatherProtocol, ChangesOverToAnotherSmoke) {
    Scene scene;
    const SmokeHandle other = scene.add_smoke(Scene::usual_smoke(), "other");
    scene.run_frames(kFramesPerSecond);
    scene.set_consumer("smoke_container", "#" + std::to_string(stage::number_of(other.container)));
    scene.run_frames(2);
    EXPECT_EQ(0, scene.block(scene.smoke).consumer_attached);
    EXPECT_EQ(1, scene.block(other).consumer_attached);
    scene.set_consumer("smoke_container", std::string(""));
    scene.run_frames(2);
    EXPECT_EQ(0, scene.block(other).consumer_attached);
    EXPECT_GT(scene.active_count(scene.smoke), 0);
}

// Whatever stands in the slots, the smoke's particles stay numbers.
TEST(GatherProtocol, NoSlotSpoilsTheSmoke) {
    for (const uint32_t bits : {0x7FC00000u, 0x7F800000u, 0xFF800000u, 0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        Scene scene({{"set_colour", true}});
        const auto& parameters = stage::plugin(stage::instance_of(scene.stage(), scene.consumer)->plugin).parameters;
        for (const stage::ParameterInfo& parameter : parameters) {
            const bool is_text = parameter.kind == stage::ParameterKind::Container;
            if (is_text || parameter.name == "mode") continue;
            ASSERT_TRUE(stage::set_slot_bits(scene.stage(), scene.consumer, parameter.index, bits));
        }
        scene.run_frames(kFramesPerSecond);
        scene.set_consumer("mode", std::string("Release"));
        scene.run_frames(kFramesPerSecond);
        for (const Particle* p : scene.active(scene.smoke))
            EXPECT_TRUE(std::isfinite(p->position.x + p->velocity.x + p->age + p->size_x)) << std::hex << bits;
        expect_whole_pool(scene, scene.smoke, 200);
    }
}

}  // namespace
}  // namespace tovu
