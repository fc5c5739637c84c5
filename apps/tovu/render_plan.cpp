#include "render_plan.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>

#include "option_values.h"
#include "stage/assets/picture.h"
#include "stage/frame_rate.h"
#include "stage/output/frame_names.h"
#include "stage/output/video_file.h"
#include "stage/scenefile/parameter_override.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

Result<Done> apply_size(const std::string& text, stage::SceneDescription& scene) {
    if (text.empty()) return Done{};
    const size_t x = text.find('x');
    std::array<int32_t, 2> size{};
    const bool right = x != std::string::npos && parse_number(std::string_view(text).substr(0, x), size[0]) &&
                       parse_number(std::string_view(text).substr(x + 1), size[1]) && size[0] >= 1 &&
                       size[0] <= stage::kMaxPictureSide && size[1] >= 1 && size[1] <= stage::kMaxPictureSide;
    if (!right)
        return Error{fmt::format("--size {}: must be WIDTHxHEIGHT in pixels, 1 to {} each, such as 1280x720", text,
                                 stage::kMaxPictureSide)};
    scene.size = size;
    return Done{};
}

Result<Done> apply_seed(const std::string& text, stage::SceneDescription& scene) {
    if (text.empty() || parse_number(text, scene.seed)) return Done{};
    return Error{fmt::format("--seed {}: must be a whole number from 0 to 4294967295", text)};
}

// Values of parameters stay those of the scene's own rate, and are converted when the scene is built.
Result<Done> apply_rate(const std::string& text, stage::SceneDescription& scene) {
    double rate = 0.0;
    if (text.empty()) return Done{};
    if (!parse_number(text, rate) || !(rate >= 1.0 && rate <= 1000.0))
        return Error{fmt::format("--rate {}: must be frames per second from 1 to 1000, such as 25, 29.97 or 60", text)};
    scene.values_rate = scene.frame_rate;
    scene.frame_rate = stage::exact_frame_rate(rate);
    return Done{};
}

Result<Done> apply_samples(const std::string& text, stage::SceneDescription& scene) {
    int32_t& samples = scene.samples;
    if (text.empty() || (parse_number(text, samples) && samples >= 1 && samples <= 16)) return Done{};
    return Error{fmt::format("--samples {}: must be a whole number from 1, for no antialiasing, to 16", text)};
}

Result<Done> apply_timeout(const std::string& text, RenderPlan& plan) {
    double& seconds = plan.plugin_timeout_seconds;
    if (text.empty() || (parse_number(text, seconds) && seconds >= 0 && seconds <= kMaxPluginTimeoutSeconds))
        return Done{};
    return Error{fmt::format("--plugin-timeout {}: must be a time in seconds from 0, for no limit, to {}", text,
                             kMaxPluginTimeoutSeconds)};
}

Result<Done> take_frames(const std::string& text, RenderPlan& plan) {
    const Result<FrameRange> range = parse_frames(text, plan.scene);
    if (!range) return range.error();
    plan.first = range->first;
    plan.last = range->last;
    return Done{};
}

Result<Done> take_moment(const std::string& text, RenderPlan& plan) {
    const auto count = stage::frame_count(plan.scene);
    const double length = static_cast<double>(count) / plan.scene.frame_rate;
    double seconds = 0.0;
    if (!parse_number(text, seconds) || !std::isfinite(seconds) || seconds < 0.0 ||
        stage::frame_at(plan.scene, seconds) >= count)
        return Error{fmt::format("--at {}: must be a time in seconds from 0 and below {:.10g}, the length of the scene",
                                 text, length)};
    plan.first = plan.last = static_cast<int>(stage::frame_at(plan.scene, seconds));
    return Done{};
}

// The pictures that the render would overwrite.
Result<Done> check_frames_are_no_inputs(const std::string& pattern, const RenderPlan& plan) {
    const Result<stage::NumberedFiles> existing = stage::existing_frames(pattern);
    if (!existing) return existing.error();
    for (const auto& [number, file] : *existing) {
        if (number < plan.first || number > plan.last) continue;
        if (Result<Done> checked = check_not_an_input("-o", file, plan.scene); !checked) return checked;
    }
    return Done{};
}

// The folder of numbered pictures is created if it does not exist; its parent folder must exist.
Result<Done> check_numbered(const std::string& output) {
    const Result<std::filesystem::path> name = stage::frame_name(output, 0);
    if (!name) return Error{fmt::format("-o {}: {}", output, name.error().message)};
    if (name->extension() != ".png") return Error{fmt::format("-o {}: numbered pictures must end in .png", output)};
    std::error_code ignored;
    if (!name->has_parent_path() || std::filesystem::exists(name->parent_path(), ignored))
        return check_folder("-o", *name);
    return check_folder("-o", name->parent_path());
}

Result<Done> take_output(const RenderOptions& options, RenderPlan& plan) {
    if (!options.at.empty() && !options.frames.empty()) return Error{"--at and --frames: give only one of them"};
    if (stage::is_frame_pattern(options.output)) {
        plan.kind = OutputKind::kNumbered;
        if (!options.at.empty()) return Error{"--at: renders one picture; numbered pictures take --frames A-B"};
        if (Result<Done> checked = check_numbered(options.output); !checked) return checked;
        if (Result<Done> taken = take_frames(options.frames, plan); !taken) return taken;
        return check_frames_are_no_inputs(options.output, plan);
    }
    const std::filesystem::path file = options.output;
    if (stage::is_video_name(file)) {
        plan.kind = OutputKind::kVideo;
        if (!options.at.empty()) return Error{"--at: renders one picture; a video takes --frames A-B"};
        if (Result<Done> checked = check_folder("-o", file); !checked) return checked;
        return take_frames(options.frames, plan);
    }
    if (file.extension() != ".png")
        return Error{
            fmt::format("-o {}: must end in .mp4, .mov, .webm or .png; numbered pictures need a name such as "
                        "frames/%04d.png",
                        options.output)};
    if (Result<Done> checked = check_output("-o", file, plan.scene); !checked) return checked;
    if (!options.at.empty()) return take_moment(options.at, plan);
    Result<Done> taken = take_frames(options.frames, plan);
    if (taken && plan.first != plan.last)
        return Error{
            fmt::format("-o {}: one picture needs --at SECONDS; numbered pictures need a name such as "
                        "frames/%04d.png",
                        options.output)};
    return taken;
}

}  // namespace

stage::Result<RenderPlan> plan_render(const RenderOptions& options) {
    Result<stage::SceneDescription> scene = stage::load_scene_file(options.scene);
    if (!scene) return scene.error();
    RenderPlan plan{.scene = std::move(*scene)};
    if (const Result<Done> done = apply_size(options.size, plan.scene); !done) return done.error();
    if (const Result<Done> done = apply_seed(options.seed, plan.scene); !done) return done.error();
    if (const Result<Done> done = apply_rate(options.rate, plan.scene); !done) return done.error();
    if (const Result<Done> done = apply_samples(options.samples, plan.scene); !done) return done.error();
    if (const Result<Done> done = apply_timeout(options.plugin_timeout, plan); !done) return done.error();
    for (const std::string& setting : options.settings) {
        if (const Result<Done> done = stage::override_parameter(plan.scene, setting); !done) return done.error();
    }
    if (const Result<Done> done = take_output(options, plan); !done) return done.error();
    if (options.trace.empty()) return plan;
    if (const Result<Done> done = check_output("--trace", options.trace, plan.scene); !done) return done.error();
    return plan;
}

}  // namespace tovu
