#include "render_outputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "row_content.h"
#include "stage/opengl/straight_picture.h"
#include "stage/output/color_bleed.h"
#include "stage/output/exr_file.h"
#include "stage/output/frame_names.h"
#include "stage/output/whole_file.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

Result<Done> begin_row(Output& output, const stage::RowContent& content, bool resume) {
    const OutputPlan& plan = output.plan;
    const std::filesystem::path folder = stage::frame_name(plan.name, 0)->parent_path();
    std::error_code error;
    if (!folder.empty()) std::filesystem::create_directories(folder, error);
    if (error) return Error{fmt::format("{} {}: {}", plan.option, plan.name, error.message())};
    Result<stage::PictureRow> row =
        stage::PictureRow::begin(plan.name, row_content(content, plan), {plan.frames.first, plan.frames.last}, resume);
    if (!row) return Error{plan.option + " " + row.error().message};
    output.row = std::move(*row);
    for (int frame = plan.frames.first; frame <= plan.frames.last; ++frame)
        output.is_there.push_back(stage::is_whole_picture(*stage::frame_name(plan.name, frame)));
    return Done{};
}

Result<Output> open_output(const OutputPlan& plan, const stage::RowContent& content, bool resume) {
    Output output{plan, {}, {}, {}};
    const std::filesystem::path file = plan.name;
    if (plan.kind != OutputKind::kNumbered &&
        !stage::remove_abandoned(file.parent_path(), [&](const std::string& name) { return name == file.filename(); }))
        return Error{fmt::format("{} {}: another render is writing this file; wait for its end or choose another name",
                                 plan.option, plan.name)};
    if (plan.kind == OutputKind::kVideo) {
        Result<stage::VideoFile> video = stage::VideoFile::create(plan.name, plan.video);
        if (!video) return video.error();
        output.video = std::move(*video);
    }
    if (plan.kind == OutputKind::kNumbered)
        if (const Result<Done> begun = begin_row(output, content, resume); !begun) return begun.error();
    return output;
}

bool wants(const Output& output, int frame) {
    const FrameRange& frames = output.plan.frames;
    if (frame < frames.first || frame > frames.last) return false;
    return output.is_there.empty() || !output.is_there[static_cast<size_t>(frame - frames.first)];
}

const stage::Picture& bytes_of(FramePictures& pictures, const Outputs& outputs) {
    if (!pictures.bytes) {
        pictures.bytes = stage::straight_bytes(pictures.drawn, outputs.shoulder);
        stage::bleed_colors(*pictures.bytes);
    }
    return *pictures.bytes;
}

const stage::DeepPicture& deep_of(FramePictures& pictures, const Outputs& outputs) {
    if (!pictures.deep) {
        pictures.deep = stage::straight_deep(pictures.drawn, outputs.shoulder);
        stage::bleed_colors(*pictures.deep);
    }
    return *pictures.deep;
}

Result<Done> write_to(Output& output, int frame, FramePictures& pictures, const Outputs& outputs) {
    if (output.video) return output.video->add_frame(deep_of(pictures, outputs));
    const Result<std::filesystem::path> file = output.plan.kind == OutputKind::kNumbered
                                                   ? stage::frame_name(output.plan.name, frame)
                                                   : std::filesystem::path(output.plan.name);
    if (!file) return file.error();
    stage::PictureTexts texts = outputs.texts;
    texts.emplace_back("Frame", std::to_string(frame));
    if (file->extension() == ".exr") return stage::write_exr(*file, pictures.drawn, texts);
    if (output.plan.bits == 16) return stage::write_png(*file, deep_of(pictures, outputs), texts);
    return stage::write_png(*file, bytes_of(pictures, outputs), texts);
}

}  // namespace

stage::Result<Outputs> open_outputs(const std::vector<OutputPlan>& plans, const stage::SceneDescription& scene,
                                    const stage::RowContent& content, bool resume) {
    Outputs outputs{{},
                    scene.shoulder,
                    {{"Software", "tovu " TOVU_VERSION},
                     {"Scene", scene.file.filename().string()},
                     {"Seed", std::to_string(scene.seed)}}};
    for (const OutputPlan& plan : plans) {
        Result<Output> output = open_output(plan, content, resume);
        if (!output) return output.error();
        outputs.list.push_back(std::move(*output));
    }
    return outputs;
}

bool wants_frame(const Outputs& outputs, int frame) {
    return std::ranges::any_of(outputs.list, [frame](const Output& output) { return wants(output, frame); });
}

stage::Result<stage::Done> write_frame(Outputs& outputs, int frame, FramePictures pictures) {
    for (Output& output : outputs.list) {
        if (!wants(output, frame)) continue;
        if (Result<Done> written = write_to(output, frame, pictures, outputs); !written) return written;
    }
    return Done{};
}

stage::Result<stage::Done> finish_outputs(Outputs& outputs) {
    for (Output& output : outputs.list) {
        if (!output.video) continue;
        if (Result<Done> finished = output.video->finish(); !finished) return finished;
    }
    return Done{};
}

}  // namespace tovu
