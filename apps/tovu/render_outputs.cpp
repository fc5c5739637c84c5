#include "render_outputs.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>

#include "sequence_content.h"
#include "stage/file_ending.h"
#include "stage/opengl/straight_picture.h"
#include "stage/output/color_bleed.h"
#include "stage/output/contact_sheet.h"
#include "stage/output/exr_file.h"
#include "stage/output/frame_names.h"
#include "stage/output/whole_file.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

Result<Done> begin_sequence(Output& output, const stage::SequenceContent& content, bool resume) {
    const OutputPlan& plan = output.plan;
    Result<stage::PictureSequence> sequence =
        stage::PictureSequence::begin(plan.name, sequence_content(content, plan), plan.frames, resume);
    if (!sequence) return Error{plan.option + " " + sequence.error().message};
    output.sequence = std::move(*sequence);
    for (int frame = plan.frames.first; frame <= plan.frames.last; ++frame)
        output.is_there.push_back(stage::is_whole_picture(*stage::frame_name(plan.name, frame)));
    return Done{};
}

Result<Output> open_output(const OutputPlan& plan, const stage::SequenceContent& content, bool resume) {
    Output output{plan, {}, {}, {}, {}};
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
    if (plan.kind == OutputKind::kSheet)
        output.sheet = stage::make_sheet(plan.cells[0], plan.cells[1], plan.video.width, plan.video.height);
    if (plan.kind == OutputKind::kNumbered)
        if (const Result<Done> begun = begin_sequence(output, content, resume); !begun) return begun.error();
    return output;
}

bool wants(const Output& output, int frame) {
    if (!contains(output.plan.frames, frame)) return false;
    if (output.plan.kind == OutputKind::kSheet)
        return std::ranges::find(output.plan.sheet_frames, frame) != output.plan.sheet_frames.end();
    return output.is_there.empty() || !output.is_there[static_cast<size_t>(frame - output.plan.frames.first)];
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

void place_in_sheet(Output& output, int frame, const stage::DeepPicture& picture) {
    const OutputPlan& plan = output.plan;
    const auto cell = std::ranges::find(plan.sheet_frames, frame) - plan.sheet_frames.begin();
    stage::place_in_sheet(output.sheet, plan.cells[0], plan.cells[1], static_cast<int32_t>(cell), picture);
}

Result<Done> write_sheet(Output& output, stage::PictureTexts texts) {
    texts.emplace_back("Frame", fmt::format("{}", fmt::join(output.plan.sheet_frames, " ")));
    stage::bleed_colors(output.sheet);
    if (output.plan.bits == 16) return stage::write_png(output.plan.name, output.sheet, texts);
    return stage::write_png(output.plan.name, stage::to_bytes(output.sheet), texts);
}

Result<Done> write_to(Output& output, int frame, FramePictures& pictures, const Outputs& outputs) {
    if (output.video) return output.video->add_frame(deep_of(pictures, outputs));
    if (output.plan.kind == OutputKind::kSheet) {
        place_in_sheet(output, frame, deep_of(pictures, outputs));
        return Done{};
    }
    const Result<std::filesystem::path> file = output.plan.kind == OutputKind::kNumbered
                                                   ? stage::frame_name(output.plan.name, frame)
                                                   : std::filesystem::path(output.plan.name);
    if (!file) return file.error();
    stage::PictureTexts texts = outputs.texts;
    texts.emplace_back("Frame", std::to_string(frame));
    if (stage::file_ending(*file) == ".exr") return stage::write_exr(*file, pictures.drawn, texts);
    if (output.plan.bits == 16) return stage::write_png(*file, deep_of(pictures, outputs), texts);
    return stage::write_png(*file, bytes_of(pictures, outputs), texts);
}

// Checks that all pictures and the manifest still exist.
Result<Done> check_sequence(const OutputPlan& plan) {
    const auto missing = [](const std::filesystem::path& file) {
        return Error{
            fmt::format("{}: was removed while these pictures were rendered; render them again", file.string())};
    };
    const stage::NumberedFiles files = *stage::existing_frames(plan.name);
    for (int frame = plan.frames.first; frame <= plan.frames.last; ++frame)
        if (!files.contains(frame)) return missing(*stage::frame_name(plan.name, frame));
    const std::filesystem::path manifest = *stage::manifest_name(plan.name);
    return std::filesystem::exists(manifest) ? Result<Done>(Done{}) : missing(manifest);
}

}  // namespace

stage::Result<Outputs> open_outputs(const std::vector<OutputPlan>& plans, const stage::SceneDescription& scene,
                                    const stage::SequenceContent& content, bool resume) {
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
        Result<Done> finished = Done{};
        if (output.video) finished = output.video->finish();
        if (output.plan.kind == OutputKind::kSheet) finished = write_sheet(output, outputs.texts);
        if (output.plan.kind == OutputKind::kNumbered) finished = check_sequence(output.plan);
        if (!finished) return finished;
    }
    return Done{};
}

}  // namespace tovu
