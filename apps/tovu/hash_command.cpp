#include "hash_command.h"

#include <fmt/format.h>

#include <filesystem>

#include "option_values.h"
#include "stage/replay/digest.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/scene_run.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

Result<Done> hash_scene(const std::string& file, const HashOptions& options, int every,
                        const std::function<void(const std::string&)>& print) {
    const Result<stage::SceneDescription> scene = stage::load_scene_file(file);
    if (!scene) return scene.error();
    const Result<FrameRange> range = parse_frames(options.frames, *scene);
    if (!range) return range.error();
    Result<stage::BuiltScene> built = stage::build_scene(*scene, options.plugin);
    if (!built) return built.error();
    const Result<stage::FieldTables> tables = stage::read_field_tables();
    if (!tables) return tables.error();
    stage::SceneRun run = stage::start_run(std::move(*built));
    const std::string name = std::filesystem::path(file).stem().string();
    for (int frame = (range->first + every - 1) / every * every; frame <= range->last; frame += every) {
        if (Result<Done> done = stage::run_until(run, frame); !done) return done;
        print(fmt::format("{} {} {:016x}", name, frame, stage::frame_digest(*run.built.stage, *tables)));
    }
    return Done{};
}

}  // namespace

Result<Done> hash_scenes(const HashOptions& options, const std::function<void(const std::string& line)>& print) {
    constexpr int kMost = 1'000'000'000;
    int every = 1;
    if (!options.every.empty() && (!parse_number(options.every, every) || every < 1 || every > kMost))
        return Error{fmt::format("--every {}: must be a whole number from 1 to {}", options.every, kMost)};
    for (const std::string& scene : options.scenes)
        if (Result<Done> done = hash_scene(scene, options, every, print); !done) return done;
    return Done{};
}

}  // namespace tovu
