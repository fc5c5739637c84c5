// Loads, builds and runs each shipped scene. None of them may be empty.
#include <algorithm>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "scene_pictures.h"
#include "stage/replay/digest.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/timeline.h"
#include "stored_picture.h"

namespace {

const std::filesystem::path kFolder = std::filesystem::path(TOVU_SOURCE_DIR) / "scenes";

std::vector<std::string> scene_names() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(kFolder))
        if (entry.path().extension() == ".toml") names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

class Scenes : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        auto read = stage::load_scene_file(kFolder / (GetParam() + ".toml"));
        ASSERT_TRUE(read) << read.error().message;
        scene = std::move(*read);
    }

    stage::SceneDescription scene;
};

TEST_P(Scenes, ShowSmokeAndKeepToTheContract) {
    std::ifstream stream(scene.file);
    std::string line;
    std::getline(stream, line);
    EXPECT_TRUE(line.starts_with("# ") && line.size() > 20) << "the first line states the scene's purpose";

    scene.size = {64, 36};
    scene.background.reset();
    for (auto& container : scene.containers) {
        if (!container.geometry) continue;
        container.geometry->fill.reset();
        if (container.geometry->kind == stage::GeometryKind::kPlate) container.opacity = 0;
    }
    std::vector<int64_t> frames;
    for (int64_t frame = 0; frame < std::min<int64_t>(stage::frame_count(scene), 150); frame += 15)
        frames.push_back(frame);
    size_t most = 0;
    for (const stage::Picture& picture : draw_frames(scene, frames).pictures) {
        size_t smoky = 0;
        for (size_t i = 3; i < picture.bytes.size(); i += 4) smoky += picture.bytes[i] > 8 ? 1 : 0;
        most = std::max(most, smoky);
    }
    EXPECT_GT(most, 64u * 36u / 50u) << "a fiftieth of the picture";
}

TEST_P(Scenes, LookAsStored) {
    scene.size = {320, 180};
    const ScenePictures drawn = draw_frames(scene, {stage::frame_count(scene) / 2});
    expect_stored_picture("scene_" + GetParam(), drawn.pictures.at(0), drawn.renderer);
}

// Update them with `./tovu hash scenes/*.toml --every 50 >scenes/digests.txt`.
TEST_P(Scenes, HaveTheStoredDigests) {
    std::ifstream stored(kFolder / "digests.txt");
    auto built = stage::build_scene(scene, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(built) << built.error().message;
    const auto tables = stage::read_field_tables();
    ASSERT_TRUE(tables) << tables.error().message;
    stage::SceneRun run = stage::start_run(std::move(*built));
    int64_t frames = 0;
    std::string name, digest;
    for (int64_t frame; stored >> name >> frame >> digest;) {
        if (name != GetParam()) continue;
        ASSERT_TRUE(stage::run_until(run, frame));
        std::ostringstream now;
        now << std::hex << std::setw(16) << std::setfill('0') << stage::frame_digest(*run.built.stage, *tables);
        ASSERT_EQ(digest, now.str()) << "frame " << frame;
        ++frames;
    }
    EXPECT_EQ((stage::frame_count(scene) + 49) / 50, frames);
}

INSTANTIATE_TEST_SUITE_P(All, Scenes, testing::ValuesIn(scene_names()), [](const auto& one) { return one.param; });

}  // namespace
