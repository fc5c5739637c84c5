// Conversion of smoke to another frame rate: a burst from a point has the same motion and spread in time.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "instance/smoke_instance.h"
#include "stage/frame_rate.h"
#include "stage/plugins/instance.h"
#include "stage/scenefile/rate_conversion.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/scene_run.h"

namespace {

using testing::HasSubstr;

constexpr double kSeconds = 3.0;  // length of every burst; particles live a little longer

struct Cloud {
    std::array<double, 3> mean{};
    std::array<double, 3> deviation{};
};

Cloud cloud_of(const Particle* active) {
    Cloud cloud;
    std::array<double, 3> squares{};
    double count = 0.0;
    for (const Particle* p = active; p != nullptr; p = p->next, ++count) {
        const std::array<double, 3> position = {p->position.x, p->position.y, p->position.z};
        for (size_t axis = 0; axis < 3; ++axis) {
            cloud.mean[axis] += position[axis];
            squares[axis] += position[axis] * position[axis];
        }
    }
    EXPECT_EQ(25000.0, count);
    for (size_t axis = 0; axis < 3; ++axis) {
        cloud.mean[axis] /= count;
        cloud.deviation[axis] = std::sqrt(std::max(0.0, squares[axis] / count - cloud.mean[axis] * cloud.mean[axis]));
    }
    return cloud;
}

stage::SceneDescription burst(const std::string& parameters, double made_at, double frame_rate) {
    auto scene = stage::read_scene(
        "[[container]]\nname = \"burst\"\n[container.parameters]\nnumber_of_particles = 25000\nbirth_rate = 1e7\n"
        "life_time = 3.5\n" +
            parameters,
        "burst.toml");
    if (!scene) throw std::runtime_error(scene.error().message);
    scene->values_rate = made_at;
    scene->frame_rate = frame_rate;
    return *scene;
}

// The cloud after each frame.
std::vector<Cloud> clouds_of(const stage::SceneDescription& scene) {
    auto built = stage::build_scene(scene, TOVU_SMOKE_PLUGIN);
    if (!built) throw std::runtime_error(built.error().message);
    EXPECT_THAT(built->warnings, testing::IsEmpty());
    stage::SceneRun run = stage::start_run(std::move(*built));
    std::vector<Cloud> clouds;
    for (int64_t frame = 0; frame < std::lround(kSeconds * scene.frame_rate); ++frame) {
        EXPECT_TRUE(stage::run_until(run, frame));
        const void* block = stage::instance_of(*run.built.stage, run.built.container_handles[0])->block;
        clouds.push_back(cloud_of(static_cast<const tovu::SmokeInstance*>(block)->active_head));
    }
    return clouds;
}

double distance(const Cloud& a, const Cloud& b) {
    return std::hypot(a.mean[0] - b.mean[0], a.mean[1] - b.mean[1], a.mean[2] - b.mean[2]);
}

struct RateCase {
    const char* name;
    double made_at;
    double frame_rate;
    const char* parameters;
};

const RateCase kRates[] = {
    {"straight", 25, 50, "initial_speed_spread = 50"},
    {"gravity", 25, 60, "gravity = -0.3\ninitial_speed_spread = 50"},
    {"fall", 50, 30, "gravity = 0.4\ninitial_speed = 0"},
    {"drag", 25, 60, "air_resistance = 60\ninitial_speed = 90\ninitial_speed_spread = 80"},
    {"light_drag", 60, 25, "air_resistance = 2\ninitial_speed = 90\ngravity = -0.5"},
    {"drag_and_gravity", 50, 25, "air_resistance = 40\ngravity = 2\ninitial_speed = 120\ninitial_speed_spread = 40"},
    {"turbulence", 25, 50, "turbulence_x = 4\nturbulence_y = 2\nturbulence_z = 1\ninitial_speed = 0\nwind_force = 9"},
    {"all", 29.97, 59.94,
     "air_resistance = 20\ngravity = -0.4\nwind_force = 20\nwind_rot_z = 30\nturbulence_x = 3\nturbulence_y = 3\n"
     "initial_speed_spread = 60\nopening_angle_x = 120\nopening_angle_z = 120"},
};

class Rates : public testing::TestWithParam<RateCase> {};

TEST_P(Rates, ABurstHasTheSameMotionAndSpread) {
    const RateCase& row = GetParam();
    const double made_at = stage::exact_frame_rate(row.made_at), rate = stage::exact_frame_rate(row.frame_rate);
    const std::vector<Cloud> before = clouds_of(burst(row.parameters, made_at, made_at));
    const std::vector<Cloud> after = clouds_of(burst(row.parameters, made_at, rate));
    double path = 0.0;
    for (size_t i = 1; i < before.size(); ++i) path += distance(before[i - 1], before[i]);
    int compared = 0;
    for (size_t frames = 1; frames <= before.size(); ++frames) {
        const double other = static_cast<double>(frames) * rate / made_at;
        const auto other_frames = static_cast<size_t>(std::lround(other));
        if (std::abs(other - std::round(other)) > 1e-6 || other_frames > after.size()) continue;
        const Cloud &a = before[frames - 1], &b = after[other_frames - 1];
        ++compared;
        EXPECT_LT(distance(a, b), 0.02 * path) << "after frame " << frames;
        for (size_t axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(a.deviation[axis], b.deviation[axis], 0.02 * a.deviation[axis] + 1e-3)
                << "axis " << axis << " after frame " << frames;
        }
    }
    EXPECT_GE(compared, 10);
}

INSTANTIATE_TEST_SUITE_P(All, Rates, testing::ValuesIn(kRates), [](const auto& row) { return row.param.name; });

// The effective value of a parameter, which is that of its last setting.
double value_of(const std::vector<stage::ParameterSetting>& settings, const std::string& name) {
    double value = -1.0;
    for (const stage::ParameterSetting& setting : settings) {
        if (setting.name != name) continue;
        if (const auto* whole = std::get_if<int>(&setting.value)) value = *whole;
        if (const auto* number = std::get_if<double>(&setting.value)) value = *number;
    }
    return value;
}

TEST(Rate, ValuesOfALookAndOfTheTimelineAreConverted) {
    stage::SceneDescription scene = burst(
        "air_resistance = 40\ngravity = 8\n[[at]]\ntime = 1\ncontainer = \"burst\"\n"
        "parameters = { air_resistance = 0 }\n[[track]]\ncontainer = \"burst\"\n"
        "parameter = \"turbulence_x\"\nkeys = [{ time = 0, value = 1 }, { time = 1, value = 3 }]",
        25, 50);
    for (stage::ParameterSetting& setting : scene.containers[0].parameters)
        if (setting.name == "air_resistance") setting.frame_rate = 12.5;
    const auto built = stage::build_scene(scene, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(built) << built.error().message;
    const double d = 0.96, d_scene = std::sqrt(d), d_after = std::sqrt(d_scene);
    const auto& settings = built->description.containers[0].parameters;
    EXPECT_NEAR(1000 * (1 - d_after), value_of(settings, "air_resistance"), 1e-9);
    EXPECT_NEAR(50.0 * 4.0 * (1 - d_after) / (1 - d), value_of(settings, "initial_speed"), 1e-9) << "the default too";
    EXPECT_NEAR(8.0 * (d_scene / d_after) * (1 - d_after) / (1 - d_scene), value_of(settings, "gravity"), 1e-9)
        << "the scene's own";
    const auto& entry = built->description.timeline.at(0).parameters;
    EXPECT_EQ(0.0, value_of(entry, "air_resistance"));
    EXPECT_NEAR(4.0, value_of(entry, "gravity"), 1e-9) << "without drag now";
    const auto& keys = built->description.tracks.at(0).keys;
    EXPECT_NEAR(3 * std::sqrt(2), value_of({keys.at(1).setting}, "turbulence_x"), 1e-9);
}

TEST(Rate, ValuesThatCannotBeConvertedAreReported) {
    const std::string drag =
        ":7:18: air_resistance is 190 at 25 frames a second, out of its range: held at 100; in a second";
    const std::string wind = ":8:18: what use_wind_image does at 25 frames a second differs a little from 50";
    const auto built = stage::build_scene(burst("air_resistance = 100\nuse_wind_image = true\n"
                                                "wind_image = \"rise\"",
                                                50, 25),
                                          TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(built) << built.error().message;
    EXPECT_THAT(built->warnings, testing::UnorderedElementsAre(HasSubstr(drag), HasSubstr(wind)));
    // With the clamped drag, a particle travels the same distance until it stops.
    EXPECT_NEAR(50.0 * 0.5 * 100 / 100, value_of(built->description.containers[0].parameters, "initial_speed"), 1e-9);
}

}  // namespace
