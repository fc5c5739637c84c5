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
    void SetUp() override {
        auto read = stage::load_scene_file(std::filesystem::path(TOVU_SOURCE_DIR) / "scenes" / (GetParam() + ".toml"));
        ASSERT_TRUE(read) << read.error().message;
        scene = std::move(*read);
    }

    /// Pictures of these frames, in order of time.
    std::vector<stage::Picture> pictures(const std::vector<int64_t>& frames) {
        std::vector<stage::Picture> drawn;
        auto built = stage::build_scene(scene, TOVU_SMOKE_PLUGIN);
        auto canvas = stage::make_canvas(scene);
        if (!built || !canvas) throw std::runtime_error(built ? canvas.error().message : built.error().message);
        for (const std::string& warning : built->warnings) ADD_FAILURE() << warning;
        auto run = stage::start_run(std::move(*built));
        for (const int64_t frame : frames) {
            const auto done = stage::run_until(run, frame);
            EXPECT_TRUE(done) << done.error().message;
            auto picture = stage::draw_scene(*canvas, run.built);
            EXPECT_TRUE(picture) << picture.error().message;
            drawn.push_back(std::move(*picture));
        }
        for (const auto& complaint : run.built.stage->complaints.list) ADD_FAILURE() << to_string(complaint);
        renderer = canvas->context.description().renderer;
        renderer.resize(std::min(renderer.size(), renderer.find(" (")));  // "llvmpipe", without details of its build
        return drawn;
    }

    stage::SceneDescription scene;
    std::string renderer;
};

// Small pictures show that there is smoke, if not how it looks.
TEST_P(Scenes, ShowSmokeAndKeepToTheContract) {
    std::ifstream stream(scene.file);
    std::string line;
    std::getline(stream, line);
    EXPECT_TRUE(line.starts_with("# ") && line.size() > 20) << "it begins with its purpose";

    scene.size = {64, 36};
    scene.background.reset();
    for (auto& container : scene.containers)
        if (container.geometry) container.geometry->fill.reset();
    std::vector<int64_t> frames;
    for (int64_t frame = 0; frame < std::min<int64_t>(stage::frame_count(scene), 150); frame += 15)
        frames.push_back(frame);
    size_t most = 0;
    for (const stage::Picture& picture : pictures(frames)) {
        size_t smoky = 0;
        for (size_t i = 3; i < picture.bytes.size(); i += 4) smoky += picture.bytes[i] > 8 ? 1 : 0;
        most = std::max(most, smoky);
    }
    EXPECT_GT(most, 64u * 36u / 50u) << "a fiftieth of the picture";
}

// The middle of each scene, small: that is where most of it is to be seen.
TEST_P(Scenes, LookAsStored) {
    scene.size = {320, 180};
    const auto drawn = pictures({stage::frame_count(scene) / 2});
    expect_stored_picture("scene_" + GetParam(), drawn.at(0), renderer);
}

INSTANTIATE_TEST_SUITE_P(All, Scenes, testing::ValuesIn(scene_names()), [](const auto& one) { return one.param; });

}  // namespace
