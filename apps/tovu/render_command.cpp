#include "render_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <functional>

#include "render_outputs.h"
#include "render_plan.h"
#include "sequence_content.h"
#include "source_pictures.h"
#include "stage/assets/picture_file.h"
#include "stage/lint/lint.h"
#include "stage/output/frame_names.h"
#include "stage/output/trace_file.h"
#include "stage/output/writer_thread.h"
#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_run.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Result;

// Pictures that can wait for the writer. Two even out frames that take longer to draw or to write.
constexpr size_t kMostWaiting = 2;

// Makes the picture of a frame. Called in ascending order of frames; is_last: for the last one.
using FrameSource = std::function<Result<FramePictures>(int frame, bool is_last)>;

FrameSource drawn_frames(stage::SceneRun& run, stage::SceneCanvas& canvas, RenderTimes& times) {
    return [&run, &canvas, &times](int frame, bool is_last) -> Result<FramePictures> {
        if (Result<Done> done = timed(times.simulate, [&] { return stage::run_until(run, frame); }); !done)
            return done.error();
        if (Result<Done> done = timed(times.draw, [&] { return stage::draw_frame(canvas, run.built); }); !done)
            return done.error();
        FramePictures pictures{timed(times.read, [&] { return stage::read_frame(canvas); }), {}, {}};
        if (is_last)
            // Before the last picture is written: after a fault in the clean-up no output may look complete.
            stage::remove_instances(*run.built.stage);
        return pictures;
    };
}

FrameSource stored_frames(const std::string& pattern, RenderTimes& times) {
    return [&pattern, &times](int frame, bool) -> Result<FramePictures> {
        Result<stage::DeepPicture> picture =
            timed(times.read, [&] { return stage::read_deep_picture(*stage::frame_name(pattern, frame)); });
        if (!picture) return picture.error();
        return FramePictures{{}, {}, std::move(*picture)};
    };
}

Result<Done> render_frames(const RenderPlan& plan, const FrameSource& source, Outputs& outputs, RenderTimes& times,
                           const RenderProgress& progress) {
    std::vector<int> frames;
    for (int frame = plan.frames.first; frame <= plan.frames.last; ++frame)
        if (wants_frame(outputs, frame)) frames.push_back(frame);
    if (frames.empty()) return finish_outputs(outputs);  // resumed, and all pictures exist
    const int total = static_cast<int>(frames.size());
    std::atomic<int> frames_done = 0;
    stage::WriterThread writer(kMostWaiting);  // destroyed before the outputs
    progress(0, total);
    for (const int frame : frames) {
        Result<FramePictures> pictures = source(frame, frame == frames.back());
        if (!pictures) return pictures.error();
        ++times.frames;
        auto write = [&outputs, &frames_done, frame, done = times.frames, pictures = std::move(*pictures)]() mutable {
            const Result<Done> written = write_frame(outputs, frame, std::move(pictures));
            frames_done = done;
            return written;
        };
        if (Result<Done> added = timed(times.wait, [&] { return writer.add(std::move(write)); }); !added) return added;
        progress(std::min<int>(frames_done, total - 1), total);
    }
    Result<Done> finished = timed(times.wait, [&] {
        const Result<Done> written = writer.finish();
        return written ? finish_outputs(outputs) : written;
    });
    times.write = writer.busy_seconds();
    if (finished) progress(total, total);
    return finished;
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

// Warns of a video that cannot hold the alpha of a transparent scene.
void warn_of_lost_alpha(const OutputPlan& output, const stage::SceneDescription& scene, const RenderWarning& warn) {
    if (scene.background || output.kind != OutputKind::kVideo || output.video.part != stage::VideoPart::kPicture)
        return;
    const stage::VideoAlpha alpha = stage::video_alpha(output.name);
    if (alpha == stage::VideoAlpha::kNone)
        warn(
            fmt::format("{}: has no alpha, so that the scene, which has no background, is over black; .mov and .webm "
                        "keep the alpha, and --key writes it beside",
                        output.name));
    if (alpha == stage::VideoAlpha::kOnOrOff)
        warn(
            fmt::format("{}: shows only what is at least half opaque, since the scene has no background; .webp keeps "
                        "faint smoke",
                        output.name));
}

// A line such as "clip.mp4: 250 frames" for each output.
std::vector<std::string> written_texts(const Outputs& outputs) {
    std::vector<std::string> lines;
    for (const Output& output : outputs.list) {
        const OutputPlan& plan = output.plan;
        auto frames = plan.kind == OutputKind::kSheet ? std::ssize(plan.sheet_frames) : frame_count(plan.frames);
        if (plan.kind == OutputKind::kVideo && plan.video.fields != stage::VideoFields::kNone) frames /= 2;
        const auto kept = std::ranges::count(output.is_there, true);
        lines.push_back(fmt::format("{}: {} frame{}", plan.name, frames, frames == 1 ? "" : "s") +
                        (kept > 0 ? fmt::format(", {} of them kept", kept) : ""));
    }
    return lines;
}

// Makes videos from numbered pictures.
Result<RenderReport> encode_pictures(const RenderPlan& plan, const RenderOptions& options,
                                     const RenderProgress& progress) {
    const Result<stage::PictureSequence> source = lock_source_pictures(plan, options);
    if (!source) return source.error();
    Result<Outputs> outputs = open_outputs(plan.outputs, plan.scene, {}, false);
    if (!outputs) return outputs.error();
    RenderReport report;
    const Result<Done> done =
        render_frames(plan, stored_frames(options.from, report.times), *outputs, report.times, progress);
    if (!done) return done.error();
    report.written = written_texts(*outputs);
    return report;
}

}  // namespace

stage::Result<RenderReport> render_scene(const RenderOptions& options, const RenderProgress& progress,
                                         const RenderWarning& warn) {
    const Result<RenderPlan> plan = plan_render(options);
    if (!plan) return plan.error();
    for (const OutputPlan& output : plan->outputs) warn_of_lost_alpha(output, plan->scene, warn);
    if (!options.from.empty()) return encode_pictures(*plan, options, progress);
    set_plugin_timeout(plan->plugin_timeout_seconds);
    Result<stage::BuiltScene> built = stage::build_scene(plan->scene, options.plugin);
    if (!built) return built.error();
    for (const std::string& warning : built->warnings) warn(warning);
    for (const std::string& line : stage::lint_scene(*built)) warn(line);
    std::vector<stage::TraceSection> sections;  // outlives the run, whose sink appends to it
    stage::SceneRun run = stage::start_run(std::move(*built));
    if (!options.trace.empty())
        run.built.stage->profile.sink = [&sections](const stage::TraceSpan& span) {
            sections.push_back(stage::trace_section(span));
        };
    Result<stage::SceneCanvas> canvas = stage::make_canvas(plan->scene);
    if (!canvas) return canvas.error();
    canvas->check_opengl = options.check_opengl;
    Result<Outputs> outputs =
        open_outputs(plan->outputs, plan->scene,
                     scene_content(plan->scene, options, canvas->context.description().renderer), options.resume);
    if (!outputs) return outputs.error();
    RenderReport report;
    const Result<Done> done =
        render_frames(*plan, drawn_frames(run, *canvas, report.times), *outputs, report.times, progress);
    if (!done) return done.error();
    if (!options.trace.empty()) {
        if (const Result<Done> written = stage::write_trace(options.trace, sections); !written) return written.error();
    }
    for (const Output& output : outputs->list)
        if (output.plan.kind == OutputKind::kNumbered) warn_of_older_frames(output.plan.name, plan->scene, warn);
    report.written = written_texts(*outputs);
    for (const stage::Complaint& complaint : run.built.stage->complaints.list)
        report.complaints.push_back(stage::to_string(complaint));
    if (const int64_t dropped = run.built.stage->complaints.dropped; dropped > 0)
        report.complaints.push_back(
            fmt::format("{} more warnings were dropped after the first {}", dropped, stage::kMaxComplaints));
    return report;
}

}  // namespace tovu
