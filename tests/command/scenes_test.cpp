// The scenes that come along: each is loaded, built and run, and none of them is empty.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/scene_run.h"
#include "stage/scenefile/timeline.h"
#include "stored_picture.h"

namespace {

std::vector<std::string> scene_names() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(TOVU_SOURCE_DIR) / "scenes")) {
        if (entry.path().extension() == ".toml") names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Scenes : public testing::TestWithParam<std::string> {
  protected:
    std::filesystem::path file() const {
        return std::filesystem::path(TOVU_SOURCE_DIR) / "scenes" / (GetParam() + ".toml");
    }
};

TEST_P(Scenes, BeginWithTheirPurpose) {
    std::ifstream stream(file());
    std::string line;
    std::getline(stream, line);
    EXPECT_EQ("# ", line.substr(0, 2));
    EXPECT_GT(line.size(), 20u);
}

// Small pictures show that there is smoke, if not how it looks.
TEST_P(Scenes, ShowSmokeAndKeepToTheContract) {
    auto scene = stage::load_scene_file(file());
    ASSERT_TRUE(scene) << scene.error().message;
    scene->size = {64, 36};
    scene->background.reset();
    for (auto& container : scene->containers) {
        if (container.geometry) container.geometry->fill.reset();
    }
    auto built = stage::build_scene(*scene, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(built) << built.error().message;
    auto run = stage::start_run(std::move(*built));
    auto canvas = stage::make_canvas(*scene);
    ASSERT_TRUE(canvas) << canvas.error().message;
    const int64_t frames = std::min<int64_t>(stage::frame_count(*scene), 150);
    size_t smoky_pixels = 0;
    for (int64_t frame = 0; frame < frames; frame += 15) {
        const auto done = stage::run_until(run, frame);
        ASSERT_TRUE(done) << done.error().message;
        const auto picture = stage::draw_scene(*canvas, run.built);
        ASSERT_TRUE(picture) << picture.error().message;
        size_t smoky = 0;
        for (size_t i = 3; i < picture->bytes.size(); i += 4) smoky += picture->bytes[i] > 8 ? 1 : 0;
        smoky_pixels = std::max(smoky_pixels, smoky);
    }
    EXPECT_GT(smoky_pixels, 64u * 36u / 50u) << "a fiftieth of the picture";
    EXPECT_TRUE(run.built.stage->complaints.list.empty()) << stage::to_string(run.built.stage->complaints.list.front());
}

// The middle of each scene, small: that is where most of it is to be seen.
TEST_P(Scenes, LookAsStored) {
    auto scene = stage::load_scene_file(file());
    ASSERT_TRUE(scene) << scene.error().message;
    scene->size = {320, 180};
    auto built = stage::build_scene(*scene, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(built) << built.error().message;
    auto run = stage::start_run(std::move(*built));
    auto canvas = stage::make_canvas(*scene);
    ASSERT_TRUE(canvas) << canvas.error().message;
    const auto done = stage::run_until(run, stage::frame_count(*scene) / 2);
    ASSERT_TRUE(done) << done.error().message;
    const auto picture = stage::draw_scene(*canvas, run.built);
    ASSERT_TRUE(picture) << picture.error().message;
    expect_stored_picture("scene_" + GetParam(), *picture, stage::renderer_family(canvas->context.description()));
}

INSTANTIATE_TEST_SUITE_P(All, Scenes, testing::ValuesIn(scene_names()), [](const auto& one) { return one.param; });

}  // namespace
