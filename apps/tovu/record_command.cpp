#include "record_command.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "option_values.h"
#include "stage/output/whole_file.h"
#include "stage/plugins/frames.h"
#include "stage/replay/recorder.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/scene_run.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

Result<Done> record_frames(const stage::SceneDescription& scene, const std::string& plugin, int frames) {
    Result<stage::BuiltScene> built = stage::build_scene(scene, plugin);
    if (!built) return built.error();
    stage::SceneRun run = stage::start_run(std::move(*built));
    stage::Stage& host = *run.built.stage;
    for (int frame = 0; frame < frames; ++frame) {
        if (Result<Done> done = stage::run_until(run, frame); !done) return done;
        stage::for_each_shown(host, [&host](const stage::DrawItem& item) {
            if (item.has_instance) stage::call_render(host, item.container.handle, 0, item.opacity);
        });
    }
    stage::remove_instances(host);
    return Done{};
}

}  // namespace

Result<int> record_scene(const RecordOptions& options) {
    const Result<stage::SceneDescription> scene = stage::load_scene_file(options.scene);
    if (!scene) return scene.error();
    const int count = static_cast<int>(stage::frame_count(*scene));
    int frames = count;
    if (!options.frames.empty() && (!parse_number(options.frames, frames) || frames < 1 || frames > count))
        return Error{fmt::format("--frames {}: must be a whole number from 1 to {}, the frames of the scene",
                                 options.frames, count)};
    if (const Result<Done> checked = check_output("-o", options.output, *scene); !checked) return checked.error();
    std::ofstream file(stage::begin_partial(options.output), std::ios::binary);
    stage::begin_recording(file, scene->seed, options.scene);
    Result<Done> done = record_frames(*scene, options.plugin, frames);
    const Result<Done> ended = stage::end_recording();
    if (done) done = ended;
    file.close();
    if (done && !file) done = Error{fmt::format("{}: cannot be written: {}", options.output, std::strerror(errno))};
    if (done) done = stage::publish_partial(options.output);
    if (done) return frames;
    stage::discard_partial(options.output);
    return done.error();
}

}  // namespace tovu
