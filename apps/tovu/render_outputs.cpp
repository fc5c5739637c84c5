#include "render_outputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "stage/output/frame_names.h"
#include "stage/output/png_file.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

Result<Output> open_output(const OutputPlan& plan, const stage::SceneDescription& scene) {
    Output output{plan, {}};
    if (plan.kind == OutputKind::kVideo) {
        Result<stage::VideoFile> video =
            stage::VideoFile::create(plan.name, {scene.size[0], scene.size[1], scene.frame_rate});
        if (!video) return video.error();
        output.video = std::move(*video);
    }
    if (plan.kind == OutputKind::kNumbered) {
        const std::filesystem::path folder = stage::frame_name(plan.name, 0)->parent_path();
        std::error_code error;
        if (!folder.empty()) std::filesystem::create_directories(folder, error);
        if (error) return Error{fmt::format("-o {}: {}", plan.name, error.message())};
    }
    return output;
}

bool wants(const Output& output, int frame) {
    return frame >= output.plan.frames.first && frame <= output.plan.frames.last;
}

Result<Done> write_to(Output& output, int frame, const stage::Picture& picture) {
    if (output.video) return output.video->add_frame(picture);
    if (output.plan.kind == OutputKind::kStill) return stage::write_png(output.plan.name, picture);
    const Result<std::filesystem::path> file = stage::frame_name(output.plan.name, frame);
    return file ? stage::write_png(*file, picture) : Result<Done>(file.error());
}

}  // namespace

stage::Result<std::vector<Output>> open_outputs(const std::vector<OutputPlan>& plans,
                                                const stage::SceneDescription& scene) {
    std::vector<Output> outputs;
    for (const OutputPlan& plan : plans) {
        Result<Output> output = open_output(plan, scene);
        if (!output) return output.error();
        outputs.push_back(std::move(*output));
    }
    return outputs;
}

bool wants_frame(const std::vector<Output>& outputs, int frame) {
    return std::ranges::any_of(outputs, [frame](const Output& output) { return wants(output, frame); });
}

stage::Result<stage::Done> write_frame(std::vector<Output>& outputs, int frame, const stage::Picture& picture) {
    for (Output& output : outputs) {
        if (!wants(output, frame)) continue;
        if (Result<Done> written = write_to(output, frame, picture); !written) return written;
    }
    return Done{};
}

stage::Result<stage::Done> finish_outputs(std::vector<Output>& outputs) {
    for (Output& output : outputs) {
        if (!output.video) continue;
        if (Result<Done> finished = output.video->finish(); !finished) return finished;
    }
    return Done{};
}

}  // namespace tovu
