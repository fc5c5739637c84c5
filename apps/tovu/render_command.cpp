#include "render_command.h"

#include <fmt/format.h>

#include <filesystem>
#include <optional>

#include "render_plan.h"
#include "stage/lint/lint.h"
#include "stage/output/frame_names.h"
#include "stage/output/png_file.h"
#include "stage/output/trace_file.h"
#include "stage/output/video_file.h"
#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_run.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

// The target of the pictures: one video, or one file for each.
struct Output {
    OutputKind kind;
    std::string name;
    std::optional<stage::VideoFile> video;
};

Result<Output> open_output(const RenderPlan& plan, const std::string& name) {
    Output output{plan.kind, name, {}};
    if (plan.kind == OutputKind::kVideo) {
        stage::VideoSettings settings;
        settings.width = plan.scene.size[0];
        settings.height = plan.scene.size[1];
        settings.frames_per_second = plan.scene.frame_rate;
        Result<stage::VideoFile> video = stage::VideoFile::create(name, settings);
        if (!video) return video.error();
        output.video = std::move(*video);
    }
    if (plan.kind == OutputKind::kNumbered) {
        const std::filesystem::path folder = stage::frame_name(name, 0)->parent_path();
        std::error_code error;
        if (!folder.empty()) std::filesystem::create_directories(folder, error);
        if (error) return Error{fmt::format("-o {}: {}", name, error.message())};
    }
    return output;
}

Result<Done> write_frame(Output& output, int frame, const stage::Picture& picture) {
    if (output.video) return output.video->add_frame(picture);
    if (output.kind == OutputKind::kStill) return stage::write_png(output.name, picture);
    const Result<std::filesystem::path> file = stage::frame_name(output.name, frame);
    return file ? stage::write_png(*file, picture) : Result<Done>(file.error());
}

Result<Done> render_frames(const RenderPlan& plan, stage::SceneRun& run, stage::SceneCanvas& canvas, Output& output,
                           const RenderProgress& progress) {
    progress(0, plan.last - plan.first + 1);
    for (int frame = plan.first; frame <= plan.last; ++frame) {
        if (Result<Done> done = stage::run_until(run, frame); !done) return done;
        const Result<stage::Picture> picture = stage::draw_scene(canvas, run.built);
        if (!picture) return picture.error();
        if (frame == plan.last)
            stage::remove_instances(*run.built.stage);  // before the last picture is written, so that a fault in
                                                        // clean-up leaves no complete output
        if (Result<Done> done = write_frame(output, frame, *picture); !done) return done;
        progress(frame - plan.first + 1, plan.last - plan.first + 1);
    }
    return output.video ? output.video->finish() : Result<Done>(Done{});
}

// Warns of numbered pictures above the scene's last frame, left by an earlier, longer render.
void warn_of_older_frames(const std::string& pattern, const stage::SceneDescription& scene, const RenderWarning& warn) {
    const Result<stage::NumberedFiles> files = stage::existing_frames(pattern);
    if (!files) return;
    const int64_t count = stage::frame_count(scene);
    const auto first = files->lower_bound(static_cast<int>(count));
    if (first == files->end()) return;
    warn(fmt::format("{} to {} are from an earlier render: this scene has {} frames", first->second.string(),
                     files->rbegin()->second.string(), count));
}

}  // namespace

stage::Result<RenderReport> render_scene(const RenderOptions& options, const RenderProgress& progress,
                                         const RenderWarning& warn) {
    const Result<RenderPlan> plan = plan_render(options);
    if (!plan) return plan.error();
    set_plugin_timeout(plan->plugin_timeout_seconds);
    Result<stage::BuiltScene> built = stage::build_scene(plan->scene, options.plugin);
    if (!built) return built.error();
    for (const std::string& warning : built->warnings) warn(warning);
    for (const std::string& line : stage::lint_scene(*built)) warn(line);
    std::vector<stage::TraceSection> sections;  // declared before the run, whose sink appends to it
    stage::SceneRun run = stage::start_run(std::move(*built));
    if (!options.trace.empty())
        run.built.stage->profile.sink = [&sections](const stage::TraceSpan& span) {
            sections.push_back(
                {std::string(span.event), std::string(span.container), span.start_seconds, span.duration_seconds});
        };
    Result<stage::SceneCanvas> canvas = stage::make_canvas(plan->scene);
    if (!canvas) return canvas.error();
    canvas->check_opengl = options.check_opengl;
    Result<Output> output = open_output(*plan, options.output);
    if (!output) return output.error();
    const Result<Done> done = render_frames(*plan, run, *canvas, *output, progress);
    if (!done) return done.error();
    if (!options.trace.empty()) {
        if (const Result<Done> written = stage::write_trace(options.trace, sections); !written) return written.error();
    }
    if (plan->kind == OutputKind::kNumbered) warn_of_older_frames(options.output, plan->scene, warn);
    RenderReport report;
    report.frames = plan->last - plan->first + 1;
    for (const stage::Complaint& complaint : run.built.stage->complaints.list)
        report.complaints.push_back(stage::to_string(complaint));
    if (const int64_t dropped = run.built.stage->complaints.dropped; dropped > 0)
        report.complaints.push_back(
            fmt::format("{} more warnings were dropped after the first {}", dropped, stage::kMaxComplaints));
    return report;
}

}  // namespace tovu
