// The smoke itself on the Stage: what the design promises about runs, shown with real particles.
#include <gmock/gmock.h>

#include "opengl.h"
#include "test_host.h"

namespace tovu {
namespace {

using testing::IsEmpty;

/// Frame by frame, every live particle's place.
std::vector<std::vector<float>> places_of(stage::Stage& scene, int32_t container, int frames) {
    std::vector<std::vector<float>> trace;
    for (int i = 0; i < frames; ++i) {
        stage::run_frame(scene);
        const auto& smoke = *static_cast<const SmokeInstance*>(stage::instance_block(scene, container));
        trace.emplace_back();
        for (const Particle* p = smoke.active_head; p; p = p->next)
            trace.back().insert(trace.back().end(), {p->position.x, p->position.y, p->position.z});
    }
    return trace;
}

class SmokeScene : public testing::Test {
  protected:
    /// A new Stage with its own random streams and a smoke "first".
    int32_t set_up(uint32_t seed) {
        stage_ = stage::make_stage({.seed = seed, .frame_period_seconds = 0.04});
        return add_smoke("first");
    }
    int32_t add_smoke(const std::string& name) {
        const auto plugin = stage::load_plugin(*stage_, TOVU_SMOKE_PLUGIN);
        if (!plugin) throw std::runtime_error(plugin.error().message);
        const int32_t container = stage::add_container(*stage_, name);
        const auto added = stage::add_instance(
            *stage_, container, *plugin,
            {{"spawn_range_x", 50.0}, {"turbulence_y", 20.0}, {"life_time", 0.5}, {"life_time_spread", 50.0}});
        if (!added) throw std::runtime_error(added.error().message);
        return container;
    }
    stage::StagePtr stage_;
};

TEST_F(SmokeScene, RepeatsItselfWhateverElseIsInIt) {
    const auto run = [&](uint32_t seed, bool with_second) {
        const int32_t first = set_up(seed);
        if (with_second) add_smoke("second");
        return places_of(*stage_, first, 30);
    };
    const auto places = run(7, false);
    ASSERT_FALSE(places.back().empty());
    EXPECT_EQ(run(7, false), places);
    EXPECT_NE(run(8, false), places);
    EXPECT_EQ(run(7, true), places);
}

TEST(SmokeOnStage, KeepsTheContract) {
    TestHost host(3, 0.02);
    ASSERT_TRUE(stage::add_image(host.stage(), "mask", 2, 2, GL_LUMINANCE, {0, 255, 255, 0}));
    host.add_outlines("square", {{{{0, 0, 0}, {100, 0, 0}, {100, 100, 0}, {0, 100, 0}}}});
    const SmokeHandle cube = host.add_smoke({{"sort", true}, {"use_array", true}, {"show_forces", true}}, "cube");
    const SmokeHandle outline =
        host.add_smoke({{"spawn_type", "Container"}, {"spawn_cont_name", "square"}, {"birth_rate", 100.0}}, "outline");
    const SmokeHandle image = host.add_smoke({{"spawn_type", "Image"},
                                              {"spawn_image", "mask"},
                                              {"spawn_range_x", 10.0},
                                              {"spawn_range_y", 10.0},
                                              {"wind_image", "mask"},
                                              {"use_wind_image", true}},
                                             "image");
    host.run_frames(25);
    for (const SmokeHandle smoke : {cube, outline, image}) {
        host.render(smoke);
        host.render(smoke, 1, 0.5f);
        EXPECT_GT(host.active_count(smoke), 0) << host.container(smoke).name;
        EXPECT_EQ(host.active_count(smoke) + static_cast<int>(host.inactive(smoke).size()), 100);
        EXPECT_THAT(host.deleted(smoke), IsEmpty());
    }
    host.set(cube, "number_of_particles", 5);
    host.press(cube, "build_alpha");
    host.press(outline, "reset");
    EXPECT_EQ(host.active_count(outline), 0);
    EXPECT_THAT(host.complaints(), IsEmpty());
}

}  // namespace
}  // namespace tovu
