// Exports: the same file as a render, progress, mistakes and cancelling.
#include "apps/studio/export_run.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "../stage/temporary_folder.h"

namespace tovu {
namespace {

using testing::HasSubstr;

std::string scene_of(int seconds) {
    return "length = " + std::to_string(seconds) + R"(
size = [64, 36]
[images]
logo = "assets/logo.png"
[[container]]
name = "smoke"
texture = "logo"
parameters = { number_of_particles = 200, birth_rate = 100 }
)";
}

// A file name in the folder of the shipped scenes, which makes the picture there accessible. The file is never written.
const std::filesystem::path kFile = std::filesystem::path(TOVU_SOURCE_DIR) / "scenes" / "unsaved.toml";

// Follows the export until `until` is true or the export has ended. Fails after half a minute.
template <class Until>
ExportState follow(ExportRun& run, Until until) {
    for (int i = 0; i < 3000; ++i) {
        if (const ExportState state = run.follow(); state.ended || until(state)) return state;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ADD_FAILURE() << "the export does not end";
    return {};
}

ExportState finish(ExportRun& run) {
    return follow(run, [](const ExportState&) { return false; });
}

TEST(Export, AStillHasTheBytesOfARender) {
    const TemporaryFolder folder;
    auto run = ExportRun::start({scene_of(1), kFile, folder / "still.png", "20", {}});
    ASSERT_TRUE(run) << run.error().message;
    const ExportState state = finish(*run);
    EXPECT_EQ("", state.error);
    EXPECT_EQ(1, state.frames_done);
    EXPECT_EQ(1, state.frames_total);
    const auto scene = folder / "scene.toml";
    write_bytes(scene, scene_of(1));
    std::filesystem::create_directory_symlink(kFile.parent_path() / "assets", folder / "assets");
    const std::string command = TOVU_BINARY_DIR "/bin/tovu render " + scene.string() +
                                " --progress none --frames 20 -o " + (folder / "direct.png").string() + " >/dev/null";
    ASSERT_EQ(0, std::system(command.c_str()));
    EXPECT_EQ(file_bytes(folder / "direct.png"), file_bytes(folder / "still.png"));
}

TEST(Export, MistakesNameTheSceneFile) {
    const TemporaryFolder folder;
    auto run = ExportRun::start({"[[container]]\nname = 1\n", kFile, folder / "still.png", "0", {}});
    ASSERT_TRUE(run);
    EXPECT_THAT(finish(*run).error, HasSubstr(kFile.string() + ":2:8: name must be a text"));
    EXPECT_TRUE(folder.is_empty());
}

TEST(Export, CancelledItLeavesNothing) {
    const TemporaryFolder folder;
    auto run = ExportRun::start({scene_of(100), kFile, folder / "clip.mp4", {}, {}});
    ASSERT_TRUE(run);
    const ExportState state = follow(*run, [](const ExportState& now) { return now.frames_done > 0; });
    EXPECT_FALSE(state.ended) << state.error;
    EXPECT_EQ(5000, state.frames_total);
    run->cancel();
    EXPECT_TRUE(run->follow().ended);
    EXPECT_EQ("cancelled", run->follow().error);
    EXPECT_TRUE(folder.is_empty());
}

}  // namespace
}  // namespace tovu
