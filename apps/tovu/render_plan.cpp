#include "render_plan.h"

#include <fmt/format.h>

#include <algorithm>

#include "option_values.h"
#include "stage/assets/picture.h"
#include "stage/frame_rate.h"
#include "stage/scenefile/parameter_override.h"
#include "stage/scenefile/scene_reader.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

Result<Done> apply_size(const std::string& text, stage::SceneDescription& scene) {
    if (text.empty()) return Done{};
    std::array<int32_t, 2> size{};
    const bool right = parse_pair(text, size) && size[0] <= stage::kMaxPictureSide && size[1] <= stage::kMaxPictureSide;
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

// Only notes the rate of the parameter values; build_scene converts them.
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

}  // namespace

stage::Result<RenderPlan> plan_render(const RenderOptions& options) {
    Result<stage::SceneDescription> scene = stage::load_scene_file(options.scene);
    if (!scene) return scene.error();
    RenderPlan plan;
    plan.scene = std::move(*scene);
    if (const Result<Done> done = apply_size(options.size, plan.scene); !done) return done.error();
    if (const Result<Done> done = apply_seed(options.seed, plan.scene); !done) return done.error();
    if (const Result<Done> done = apply_rate(options.rate, plan.scene); !done) return done.error();
    if (const Result<Done> done = apply_samples(options.samples, plan.scene); !done) return done.error();
    if (const Result<Done> done = apply_timeout(options.plugin_timeout, plan); !done) return done.error();
    for (const std::string& setting : options.settings) {
        if (const Result<Done> done = stage::override_parameter(plan.scene, setting); !done) return done.error();
    }
    Result<std::vector<OutputPlan>> outputs = plan_outputs(options, plan.scene);
    if (!outputs) return outputs.error();
    plan.outputs = std::move(*outputs);
    plan.frames = plan.outputs[0].frames;
    for (const OutputPlan& output : plan.outputs) {
        plan.frames.first = std::min(plan.frames.first, output.frames.first);
        plan.frames.last = std::max(plan.frames.last, output.frames.last);
    }
    if (options.trace.empty()) return plan;
    if (const Result<Done> done = check_output("--trace", options.trace, plan.scene); !done) return done.error();
    return plan;
}

}  // namespace tovu
