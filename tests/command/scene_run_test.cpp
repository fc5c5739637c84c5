// Scenes whose shapes and images change over time, and the births of smoke in them.
#include <gmock/gmock.h>

#include <algorithm>

#include "../stage/temporary_folder.h"
#include "instance/smoke_instance.h"
#include "stage/output/png_file.h"
#include "stage/plugins/instance.h"
#include "stage/plugins/parameters.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/scene_run.h"
#include "stage/scenefile/timeline.h"

namespace {

class SceneRun : public testing::Test {
  protected:
    void write_picture(const std::string& name, int32_t side, std::vector<uint8_t> bytes) {
        const auto written = stage::write_png(folder / name, {side, side, stage::kPictureLuminance, std::move(bytes)});
        ASSERT_TRUE(written) << written.error().message;
    }

    stage::SceneRun start(const std::string& text, double frame_rate = 10) {
        const auto scene =
            stage::read_scene("frame_rate = " + std::to_string(frame_rate) + "\n" + text, folder / "scene.toml");
        if (!scene) throw std::runtime_error(scene.error().message);
        auto built = stage::build_scene(*scene, TOVU_SMOKE_PLUGIN);
        if (!built) throw std::runtime_error(built.error().message);
        return stage::start_run(std::move(*built));
    }

    static int32_t container(const stage::SceneRun& run, const std::string& name) {
        const auto& containers = run.built.description.containers;
        const auto found =
            std::find_if(containers.begin(), containers.end(), [&](const auto& one) { return one.name == name; });
        return run.built.container_handles[static_cast<size_t>(found - containers.begin())];
    }

    static int32_t alive(const stage::SceneRun& run, const std::string& name = "smoke") {
        const void* block = stage::instance_of(*run.built.stage, container(run, name))->block;
        int32_t count = 0;
        for (const Particle* p = static_cast<const tovu::SmokeInstance*>(block)->active_head; p; p = p->next) ++count;
        return count;
    }

    /// x and y of the newest particles, which have the age of the last born one.
    static std::vector<std::array<float, 2>> births(stage::SceneRun& run, const std::string& name = "smoke") {
        std::vector<std::array<float, 2>> places;
        const void* block = stage::instance_of(*run.built.stage, container(run, name))->block;
        const Particle* newest = static_cast<const tovu::SmokeInstance*>(block)->active_head;
        for (const Particle* p = newest; p; p = p->next)
            if (p->age == newest->age) places.push_back({p->position.x, p->position.y});
        return places;
    }

    TemporaryFolder folder;
};

constexpr const char* kShapes = R"(
prewarm = 1
at = [
    { time = 1, container = "late", geometry = { kind = "rectangle", width = 6, height = 6 } },
    { time = 3.5, container = "smoke", parameters = { spawn_cont_name = "late" } },
]
[[track]]
container = "bar"
property = "geometry"
keys = [
    { time = 1, value = { kind = "rectangle", width = 10, height = 4, fill = [0, 0, 1] } },
    { time = 2, value = { kind = "polygon", points = [[95, -2], [105, -2], [105, 2], [95, 2]], fill = [1, 0, 0] } },
    { time = 3, value = { kind = "ellipse", width = 2, height = 4, segments = 3 }, ease = "step" },
]
[[container]]
name = "bar"
[[container]]
name = "late"
[[container]]
name = "smoke"
parameters = { spawn_type = "Container", spawn_cont_name = "bar", birth_rate = 300, life_time = 0.15, initial_speed = 0 }
)";

struct ShapeCase {
    int64_t frame;        // at ten frames per second
    size_t corners;       // of the bar
    float first_x;        // x of its first corner
    float from, to;       // range of births in x
    float red;            // of its fill; -1 for none
    int64_t late_meshes;  // meshes of the container without a shape at the start
};

// In order of time. A rectangle of 10 units moves 100 units to the right between 1 and 2 seconds.
const ShapeCase kShapeCases[] = {{-10, 4, -5, -5, 5, 0.0f, 0},   {0, 4, -5, -5, 5, 0.0f, 0},
                                 {10, 4, -5, -5, 5, 0.0f, 1},    {15, 4, 45, 45, 55, 0.5f, 1},
                                 {20, 4, 95, 95, 105, 1.0f, 1},  {29, 4, 95, 95, 105, 1.0f, 1},
                                 {30, 3, 1, -0.5f, 1, -1.0f, 1}, {36, 3, 1, -3.0f, 3.0f, -1.0f, 1}};

TEST_F(SceneRun, ShapesDeformAndSmokeFollows) {
    stage::SceneRun run = start(kShapes);
    const stage::Stage& scene = *run.built.stage;
    const stage::Geometry& bar = *stage::geometry_of(scene, container(run, "bar"));
    const stage::Geometry& late = *stage::geometry_of(scene, container(run, "late"));
    for (const ShapeCase& c : kShapeCases) {
        ASSERT_TRUE(stage::run_until(run, c.frame));
        ASSERT_EQ(1u, bar.meshes.size()) << c.frame;
        ASSERT_EQ(c.corners, bar.meshes[0].vertices.size()) << c.frame;
        EXPECT_FLOAT_EQ(c.first_x, bar.meshes[0].vertices[0].x) << c.frame;
        EXPECT_EQ(c.late_meshes, static_cast<int64_t>(late.meshes.size())) << c.frame;
        const auto fill = stage::shown_fill(run.built.shapes.at(0));
        EXPECT_FLOAT_EQ(c.red, fill ? (*fill)[0] : -1.0f) << c.frame;
        const auto places = births(run);
        EXPECT_TRUE(c.frame < 0 || !places.empty()) << c.frame;
        for (const auto& [x, y] : places) EXPECT_THAT(x, testing::AllOf(testing::Ge(c.from), testing::Le(c.to)));
    }
    EXPECT_EQ(1 + 10 + 1, bar.changed_count) << "made, ten steps from the one place to the other, switched once";
    EXPECT_TRUE(scene.complaints.list.empty());
}

constexpr const char* kTracks = R"(
prewarm = 0.1
[[container]]
name = "smoke"
opacity = 0.9
parameters = { number_of_particles = 7, birth_rate = 30, sort = true }
[[track]]
container = "smoke"
property = "opacity"
keys = [{ time = 0, value = 0.5 }, { time = 1, value = 1 }]
[[track]]
container = "smoke"
parameter = "birth_rate"
keys = [{ time = 0, value = 100 }, { time = 1, value = 0, ease = "smooth" }]
[[track]]
container = "smoke"
parameter = "number_of_particles"
keys = [{ time = 0, value = 20 }, { time = 1, value = 40 }]
[[track]]
container = "smoke"
parameter = "alpha_curve"
keys = [{ time = 0, value = "0 1 1 0" }, { time = 1, value = "0 0 1 1" }]
)";

TEST_F(SceneRun, TracksSetOpacityAndParameters) {
    stage::SceneRun run = start(kTracks);
    const void* block = stage::instance_of(*run.built.stage, container(run, "smoke"))->block;
    const auto* smoke = static_cast<const tovu::SmokeInstance*>(block);
    const std::tuple<int64_t, float, float, int32_t, float> rows[] = {// frame; the four tracks
                                                                      {-1, 0.5f, 100.0f, 20, 1.0f},
                                                                      {5, 0.75f, 50.0f, 30, 0.5f},
                                                                      {12, 1.0f, 0.0f, 40, 0.0f}};
    for (const auto& [frame, opacity, rate, count, alpha] : rows) {
        ASSERT_TRUE(stage::run_until(run, frame));
        EXPECT_FLOAT_EQ(opacity, stage::find_container(*run.built.stage, container(run, "smoke"))->opacity) << frame;
        EXPECT_FLOAT_EQ(rate, tovu::param::birth_rate(smoke->parameters)) << frame;
        EXPECT_EQ(count, smoke->particle_count) << frame;
        EXPECT_FLOAT_EQ(alpha, smoke->alpha_table.alpha[0]) << frame;
    }
}

// Tests several frame rates, with two seconds of saved time (at a rate of 0) and with part of a period.
TEST_F(SceneRun, BurstsAreExact) {
    for (const double frame_rate : {1.0, 29.97, 50.0, 1000.0})
        for (const double rate : {0.0, 0.4, 70.0, 2000.0})
            for (const int32_t burst : {1, 7, 500, 25000}) {
                SCOPED_TRACE(testing::Message() << frame_rate << " frames, rate " << rate << ", burst " << burst);
                stage::SceneRun run =
                    start("at = [{ time = 2, container = 'smoke', burst = " + std::to_string(burst) +
                              " }]\n[[container]]\nname = 'smoke'\nparameters = { number_of_particles = 25000, "
                              "life_time = 1000, birth_rate = " +
                              std::to_string(rate) + " }",
                          frame_rate);
                const int64_t frame = stage::first_frame_from(run.built.description, 2.0);
                ASSERT_TRUE(stage::run_until(run, frame - 1));
                const int32_t before = alive(run);
                const auto done = stage::run_until(run, frame);
                if (before + burst <= 25000) {
                    ASSERT_TRUE(done) << done.error().message;
                    EXPECT_EQ(before + burst, alive(run));
                } else {
                    EXPECT_THAT(done.error().message,
                                testing::HasSubstr("scene.toml:2:48: a burst of 25000 on top of " +
                                                   std::to_string(before) + " living particles"));
                }
            }
}

// Ten births per second with a life of half a second, and a pool of eight.
TEST_F(SceneRun, RegularBirthsContinueAfterABurst) {
    stage::SceneRun run = start(R"(
at = [
    { time = 1.05, container = "smoke", burst = 20 },
    { time = 1.05, container = "smoke", burst = 30, parameters = { gravity = 1 } },
    { time = 1.15, container = "smoke", burst = 5 },
]
[[container]]
name = "smoke"
parameters = { number_of_particles = 8, life_time = 0.5, life_time_scale = 40, birth_rate = 10 }
)",
                                100);
    std::vector<int32_t> counts;
    for (const int64_t frame : {104, 105, 114, 115, 130, 170, 250}) {
        ASSERT_TRUE(stage::run_until(run, frame));
        counts.push_back(alive(run));
    }
    EXPECT_EQ(5, counts[0]);
    EXPECT_EQ(counts[0] + 50, counts[1]) << "two at once";
    EXPECT_EQ(counts[1] - 1, counts[2]) << "one died; no births while more than eight are alive";
    EXPECT_EQ(counts[2] + 5, counts[3]);
    EXPECT_GE(counts[4], 55) << "none is removed";
    EXPECT_LE(counts[5], 8);
    EXPECT_EQ(5, counts[6]);
    const std::pair<const char*, stage::ParameterValue> kept[] = {
        {"number_of_particles", 8}, {"life_time_scale", 40.0}, {"birth_rate", 10.0}};
    for (const auto& [name, value] : kept)
        EXPECT_EQ(value, *stage::get_parameter(*run.built.stage, container(run, "smoke"), name)) << name;
}

constexpr const char* kVariants = R"(
at = [
    { time = 1, container = "smoke", burst = 500, parameters = { number_of_particles = 1001 } },
    { time = 2, container = "smoke", press = "reset" },
]
track = [{ container = "smoke", parameter = "gravity", keys = [{ time = 0, value = 3 }] }]
[[container]]
name = "first"
[[container]]
name = "smoke"
texture = ["puff", "ring", "spark"]
parameters = { birth_rate = 100, life_time = 9 }
[[container.container]]
name = "child"
parameters = { birth_rate = 20 }
[[container]]
name = "last"
[[container.container]]
name = "leaf"
parameters = {}
)";

TEST_F(SceneRun, TexturesSplitTheirContainer) {
    stage::SceneRun run = start(kVariants, 25);
    const stage::Stage& scene = *run.built.stage;
    std::vector<std::string> names, textures;
    for (const int32_t handle : stage::containers_in_tree_order(scene)) {
        const stage::Container& one = *stage::find_container(scene, handle);
        names.push_back(one.name);
        const stage::Image* texture = stage::find_image(scene, one.appearance.texture_handle);
        textures.push_back(texture == nullptr ? "" : texture->name);
    }
    EXPECT_THAT(names, testing::ElementsAre("first", "smoke", "child", "smoke/2", "smoke/3", "last", "leaf"));
    EXPECT_THAT(textures, testing::ElementsAre("puff", "puff", "puff", "ring", "spark", "puff", "puff"));
    const std::vector<std::string> variants = {"smoke", "smoke/2", "smoke/3"};
    const auto sums = [&] {  // number of particles, rate, gravity, alive
        std::array<double, 4> all{};
        for (const std::string& name : variants) {
            const int32_t handle = container(run, name);
            all[0] += std::get<int>(*stage::get_parameter(scene, handle, "number_of_particles"));
            all[1] += std::get<double>(*stage::get_parameter(scene, handle, "birth_rate"));
            all[2] += std::get<double>(*stage::get_parameter(scene, handle, "gravity"));
            all[3] += alive(run, name);
        }
        return all;
    };
    ASSERT_TRUE(stage::run_until(run, 23));
    EXPECT_THAT(sums(), testing::ElementsAre(100, testing::DoubleNear(100, 1e-4), 9,
                                             testing::AllOf(testing::Ge(93), testing::Le(96))));
    const auto x_of_newest = [&](const std::string& name) { return births(run, name).at(0)[0]; };
    EXPECT_NE(x_of_newest("smoke"), x_of_newest("smoke/2")) << "random numbers of their own";
    const double before = sums()[3];
    ASSERT_TRUE(stage::run_until(run, 24));
    const double regular = sums()[3] - before;
    ASSERT_TRUE(stage::run_until(run, 25));
    EXPECT_THAT(sums(), testing::ElementsAre(1001, testing::DoubleNear(100, 1e-4), 9, before + regular + 500));
    ASSERT_TRUE(stage::run_until(run, 50));
    EXPECT_LE(sums()[3], 6) << "all were reset";
}

// A transparent picture with one blue patch, two red, three green, one half transparent and one white patch. Brightness
// × opacity, with weights of 77, 150 and 29 of 256 for red, green and blue, is 28, 76, 149, 128 and 255.
TEST_F(SceneRun, PicturesAreTracedByBrightnessAndOpacity) {
    const std::pair<int, size_t> rows[] = {
        {28, 8},  {29, 7},  {76, 7},  {77, 5}, {128, 5},
        {129, 4}, {149, 4}, {150, 1}, {255, 1}};  // threshold in 1/255, number of patches
    const std::array<uint8_t, 4> blue{0, 0, 255, 255}, red{255, 0, 0, 255}, green{0, 255, 0, 255},
        half{255, 255, 255, 128}, white{255, 255, 255, 255};
    const std::array<uint8_t, 4> patches[] = {blue, red, red, green, green, green, half, white};
    stage::Picture picture{64, 4, stage::kPictureRgba, std::vector<uint8_t>(64 * 4 * 4)};
    for (size_t i = 0; i < 256; ++i)
        if (i % 8 < 5)
            std::ranges::copy(patches[i % 64 / 8], picture.bytes.begin() + static_cast<std::ptrdiff_t>(4 * i));
    ASSERT_TRUE(stage::write_png(folder / "patches.png", picture));
    for (const auto& [threshold, count] : rows) {
        stage::SceneRun run = start("container = [{ name = 'a', geometry = { kind = 'picture', file = 'patches.png', " +
                                    ("threshold = " + std::to_string(threshold / 255.0)) + " } }]");
        EXPECT_EQ(count, stage::geometry_of(*run.built.stage, container(run, "a"))->meshes.size()) << threshold;
    }
}

struct PlayCase {
    const char* play;
    std::vector<int> shown;  // the only byte of the picture, in each frame from -0.2 seconds on
    int64_t changes;
};

// Three pictures that last two frames each, from 0 seconds on.
const PlayCase kPlayCases[] = {
    {"loop", {7, 7, 7, 7, 8, 8, 9, 9, 7, 7, 8}, 5},
    {"hold", {7, 7, 7, 7, 8, 8, 9, 9, 9, 9, 9}, 3},
    {"once", {0, 0, 7, 7, 8, 8, 9, 9, 0, 0, 0}, 5},
};

TEST_F(SceneRun, SequencesDecodeEachPictureOnce) {
    for (const uint8_t number : std::vector<uint8_t>{7, 8, 9})
        write_picture("p%_0" + std::to_string(number) + ".png", 1, {number});
    for (const PlayCase& c : kPlayCases) {
        stage::SceneRun run =
            start(std::string("prewarm = 0.2\ncontainer = [{ name = 'a' }]\n") +
                  "images = { p = { file = 'p%%_%02d.png', frame_rate = 5, play = '" + c.play + "' } }");
        const stage::Image& image = *stage::find_image(*run.built.stage, run.built.images.at(0).handle);
        std::vector<int> shown;
        for (int64_t frame = -2; frame <= 8; ++frame) {
            ASSERT_TRUE(stage::run_until(run, frame));
            shown.push_back(image.pixels.at(0));
        }
        EXPECT_EQ(c.shown, shown) << c.play;
        EXPECT_EQ(c.changes, image.revision) << c.play;
    }
}

// A larger image replaces an image of one pixel. Only its pixel at the smallest x and y is lit. With the old size, all
// births would read that pixel. The image also replaces a built-in sprite of the same name.
TEST_F(SceneRun, SmokeUsesTheNewSizeOfAnImage) {
    write_picture("small.png", 1, {255});
    std::vector<uint8_t> corner(16, 0);
    corner[0] = 255;
    write_picture("large.png", 4, corner);
    stage::SceneRun run = start(R"(
images = { puff = "small.png" }
at = [{ time = 1, image = "puff", file = "large.png" }]
[[container]]
name = "smoke"
parameters.spawn_type = "Image"
parameters.spawn_image = "puff"
parameters.spawn_range_x = 80
parameters.spawn_range_y = 80
parameters.birth_rate = 300
parameters.life_time = 0.15
parameters.initial_speed = 0
)");
    const auto outside = [](const std::array<float, 2>& place) { return place[0] >= -20 || place[1] >= -20; };
    ASSERT_TRUE(stage::run_until(run, 9));
    EXPECT_TRUE(std::ranges::any_of(births(run), outside)) << "the whole range and beyond";
    ASSERT_TRUE(stage::run_until(run, 10));
    EXPECT_FALSE(births(run).empty());
    EXPECT_TRUE(std::ranges::none_of(births(run), outside)) << "a quarter of 80 units from -40";
}

TEST_F(SceneRun, ARemovedPictureIsAnErrorWithItsPlace) {
    for (const char* name : {"p1.png", "p2.png"}) write_picture(name, 1, {255});
    stage::SceneRun run = start("container = [{ name = 'a' }]\nimages = { p = 'p%d.png' }");
    std::filesystem::remove(folder / "p2.png");
    ASSERT_TRUE(stage::run_until(run, 0));
    const auto done = stage::run_until(run, 1);
    ASSERT_FALSE(done);
    EXPECT_THAT(done.error().message,
                testing::AllOf(testing::HasSubstr("scene.toml:3:16: "), testing::HasSubstr("p2.png")));
}

}  // namespace
