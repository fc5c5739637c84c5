#include "output_plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

#include "stage/file_ending.h"
#include "stage/frame_rate.h"
#include "stage/output/frame_names.h"
#include "stage/output/picture_sequence.h"
#include "stage/output/video_file.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

Result<OutputPlan> make_plan(const std::string& option, const std::string& name, const stage::SceneDescription& scene) {
    OutputPlan output;
    output.option = option;
    output.name = name;
    output.video.width = scene.size[0];
    output.video.height = scene.size[1];
    output.video.frames_per_second = scene.frame_rate;
    const std::string ending = stage::file_ending(name);
    if (ending == ".exr") output.bits = 16;
    if (ending == ".png" || ending == ".exr")
        output.kind = stage::is_frame_pattern(name) ? OutputKind::kNumbered : OutputKind::kStill;
    else if (stage::is_frame_pattern(name))
        return Error{fmt::format("{} {}: numbered pictures must end in .png or .exr", option, name)};
    else if (stage::is_video_name(name))
        output.kind = OutputKind::kVideo;
    else
        return Error{
            fmt::format("{} {}: must end in {}, .png or .exr; numbered pictures need a name such as frames/%04d.png",
                        option, name, stage::video_endings())};
    return output;
}

Result<FrameRange> parse_moment(const std::string& text, const stage::SceneDescription& scene) {
    const auto count = stage::frame_count(scene);
    const double length = static_cast<double>(count) / scene.frame_rate;
    double seconds = 0.0;
    if (!parse_number(text, seconds) || !std::isfinite(seconds) || seconds < 0.0 ||
        stage::frame_at(scene, seconds) >= count)
        return Error{fmt::format("--at {}: must be a time in seconds from 0 and below {:.10g}, the length of the scene",
                                 text, length)};
    const auto frame = static_cast<int>(stage::frame_at(scene, seconds));
    return FrameRange{frame, frame};
}

// Errors: a folder has the name of a picture; a picture would replace a file that the scene reads.
Result<Done> check_existing_frames(const OutputPlan& output, const stage::SceneDescription& scene) {
    for (int frame = output.frames.first; frame <= output.frames.last; ++frame) {
        const std::filesystem::path file = *stage::frame_name(output.name, frame);
        if (std::error_code ignored; std::filesystem::is_directory(file, ignored))
            return Error{fmt::format("{} {}: {} is a folder; rename it or choose another name", output.option,
                                     output.name, file.string())};
    }
    const Result<stage::NumberedFiles> existing = stage::existing_frames(output.name);
    if (!existing) return existing.error();
    for (const auto& [number, file] : *existing) {
        if (number < output.frames.first || number > output.frames.last) continue;
        if (Result<Done> checked = check_not_an_input(output.option, file, scene); !checked) return checked;
    }
    return Done{};
}

// The folder of numbered pictures is created if it does not exist; its parent folder must exist.
Result<Done> check_numbered(const OutputPlan& output, const stage::SceneDescription& scene) {
    const Result<std::filesystem::path> name = stage::name_with_word(output.name, "0");
    if (!name) return Error{fmt::format("{} {}: {}", output.option, output.name, name.error().message)};
    std::error_code ignored;
    const bool has_folder = !name->has_parent_path() || std::filesystem::exists(name->parent_path(), ignored);
    if (Result<Done> checked = check_folder(output.option, has_folder ? *name : name->parent_path()); !checked)
        return checked;
    return check_existing_frames(output, scene);
}

Result<Done> check_name(const OutputPlan& output, const stage::SceneDescription& scene) {
    return output.kind == OutputKind::kNumbered ? check_numbered(output, scene)
                                                : check_output(output.option, output.name, scene);
}

// The files that an output writes, including the manifest of numbered pictures. The names were checked before.
std::vector<std::filesystem::path> files_of(const OutputPlan& output) {
    if (output.kind != OutputKind::kNumbered) return {output.name};
    std::vector<std::filesystem::path> files = {*stage::manifest_name(output.name)};
    for (int frame = output.frames.first; frame <= output.frames.last; ++frame)
        files.push_back(*stage::frame_name(output.name, frame));
    return files;
}

Result<Done> check_files_differ(const std::vector<OutputPlan>& outputs) {
    std::map<std::string, const OutputPlan*> writers;
    for (const OutputPlan& output : outputs) {
        for (const std::filesystem::path& file : files_of(output)) {
            const std::string name = std::filesystem::absolute(file).lexically_normal().string();
            const auto [writer, is_new] = writers.try_emplace(name, &output);
            if (!is_new)
                return Error{fmt::format("{} {}: writes {}, as {} {} does; give each its own name", output.option,
                                         output.name, file.string(), writer->second->option, writer->second->name)};
        }
    }
    return Done{};
}

bool has_ending(const OutputPlan& output, const char* ending) {
    return stage::file_ending(output.name) == ending;
}

Result<Done> take_bits(const std::string& text, std::vector<OutputPlan>& outputs) {
    if (text.empty()) return Done{};
    if (text != "8" && text != "16") return Error{fmt::format("--bits {}: must be 8 or 16", text)};
    if (std::ranges::none_of(outputs, [](const OutputPlan& output) { return has_ending(output, ".png"); }))
        return Error{fmt::format("--bits {}: is for .png files; there is none", text)};
    for (OutputPlan& output : outputs)
        if (has_ending(output, ".png")) output.bits = text == "8" ? 8 : 16;
    return Done{};
}

// Turns single .png pictures into sheets.
Result<Done> take_sheet(const std::string& text, std::vector<OutputPlan>& outputs) {
    if (text.empty()) return Done{};
    constexpr int32_t kMost = 100;
    std::array<int32_t, 2> cells{};
    if (!parse_pair(text, cells) || cells[0] > kMost || cells[1] > kMost || cells[0] * cells[1] < 2)
        return Error{fmt::format("--sheet {}: must be COLUMNSxROWS of two or more pictures, 1 to {} each, such as 4x3",
                                 text, kMost)};
    bool used = false;
    for (OutputPlan& output : outputs) {
        if (output.kind != OutputKind::kStill || !has_ending(output, ".png")) continue;
        output.kind = OutputKind::kSheet;
        output.cells = cells;
        used = true;
    }
    return used ? Result<Done>(Done{}) : Error{fmt::format("--sheet {}: needs an -o such as sheet.png", text)};
}

Result<Done> take_interlace(const std::string& text, const stage::SceneDescription& scene,
                            std::vector<OutputPlan>& outputs) {
    if (text.empty()) return Done{};
    if (text != "top" && text != "bottom")
        return Error{fmt::format("--interlace {}: must be top or bottom, the field that comes first", text)};
    if (scene.frame_rate != 50.0 && scene.frame_rate != stage::exact_frame_rate(59.94))
        return Error{
            fmt::format("--interlace {}: needs 50 or 59.94 pictures per second, two for each frame, not {:.6g}; "
                        "give --rate 50",
                        text, scene.frame_rate)};
    if (std::ranges::find(outputs, OutputKind::kVideo, &OutputPlan::kind) == outputs.end())
        return Error{fmt::format("--interlace {}: is for videos; there is none", text)};
    for (OutputPlan& output : outputs)
        output.video.fields = text == "top" ? stage::VideoFields::kTopFirst : stage::VideoFields::kBottomFirst;
    return Done{};
}

Result<Done> take_codec(const std::string& text, std::vector<OutputPlan>& outputs) {
    if (text.empty()) return Done{};
    if (text != "h264" && text != "h265") return Error{fmt::format("--codec {}: must be h264 or h265", text)};
    if (std::ranges::none_of(outputs, [](const OutputPlan& output) { return has_ending(output, ".mp4"); }))
        return Error{fmt::format("--codec {}: is for .mp4 files; there is none", text)};
    for (OutputPlan& output : outputs)
        if (has_ending(output, ".mp4")) output.video.codec = text;
    return Done{};
}

// Adds the key as a second video, made from the same pictures as the fill.
Result<Done> take_key(const std::string& name, const stage::SceneDescription& scene, std::vector<OutputPlan>& outputs) {
    if (name.empty()) return Done{};
    if (outputs.size() != 1) return Error{fmt::format("--key {}: needs exactly one -o, the fill", name)};
    Result<OutputPlan> key = make_plan("--key", name, scene);
    if (!key) return key.error();
    for (const OutputPlan* output : {&outputs[0], &*key})
        if (output->kind != OutputKind::kVideo)
            return Error{
                fmt::format("{} {}: a fill and its key must be .mp4 or .mov files; pictures contain their "
                            "alpha",
                            output->option, output->name)};
    outputs[0].video.part = stage::VideoPart::kFill;
    outputs[0].video.premultiplied = true;
    key->video.part = stage::VideoPart::kKey;
    outputs.push_back(std::move(*key));
    return Done{};
}

// Whether a video format supports premultiplied alpha is checked when the video is created.
Result<Done> take_alpha(const std::string& text, std::vector<OutputPlan>& outputs) {
    if (text.empty()) return Done{};
    const bool premultiplied = text == "premultiplied";
    if (!premultiplied && text != "straight")
        return Error{fmt::format("--alpha {}: must be straight or premultiplied", text)};
    for (OutputPlan& output : outputs) {
        if (output.kind != OutputKind::kVideo && has_ending(output, ".exr") != premultiplied)
            return Error{fmt::format("--alpha {}: alpha in .png files is straight, in .exr files premultiplied", text)};
        if (output.video.part == stage::VideoPart::kPicture && output.kind == OutputKind::kVideo &&
            stage::video_alpha(output.name) == stage::VideoAlpha::kNone)
            return Error{fmt::format("--alpha {}: {} has no alpha; use .mov, or write the alpha as a video with --key",
                                     text, output.name)};
        if (output.video.part != stage::VideoPart::kKey) output.video.premultiplied = premultiplied;
    }
    return Done{};
}

// Chooses the frames of a sheet, evenly from the first to the last.
Result<Done> choose_sheet_frames(OutputPlan& output) {
    if (output.kind != OutputKind::kSheet) return Done{};
    const int cells = output.cells[0] * output.cells[1];
    const int steps = output.frames.last - output.frames.first;
    if (steps + 1 < cells)
        return Error{fmt::format("--sheet {}x{}: has {} pictures, but there are only {} frames", output.cells[0],
                                 output.cells[1], cells, steps + 1)};
    for (int cell = 0; cell < cells; ++cell)
        output.sheet_frames.push_back(output.frames.first + static_cast<int>(int64_t{steps} * cell / (cells - 1)));
    return Done{};
}

Result<Done> check_field_count(const OutputPlan& output) {
    const int pictures = frame_count(output.frames);
    if (output.kind != OutputKind::kVideo || output.video.fields == stage::VideoFields::kNone || pictures % 2 == 0)
        return Done{};
    return Error{fmt::format("{} {}: interlaced frames are two pictures each, but there are {}; give --frames A-B",
                             output.option, output.name, pictures)};
}

Result<Done> take_frames(const RenderOptions& options, const stage::SceneDescription& scene,
                         std::vector<OutputPlan>& outputs) {
    const auto stills = std::ranges::count(outputs, OutputKind::kStill, &OutputPlan::kind);
    const bool only_stills = stills == std::ssize(outputs);
    if (!options.at.empty() && stills == 0)
        return Error{fmt::format("--at: is for single pictures; {} takes --frames A-B", outputs[0].name)};
    if (!options.at.empty() && !options.frames.empty() && only_stills)
        return Error{"--at and --frames: give only one of them"};
    const Result<FrameRange> range = parse_frames(options.frames, scene);
    if (!range) return range.error();
    const Result<FrameRange> frames = parse_chunk(options.chunk, *range);
    if (!frames) return frames.error();
    const Result<FrameRange> moment = options.at.empty() ? *frames : parse_moment(options.at, scene);
    if (!moment) return moment.error();
    for (OutputPlan& output : outputs) {
        output.frames = output.kind == OutputKind::kStill ? *moment : *frames;
        if (output.kind == OutputKind::kStill && moment->first != moment->last)
            return Error{
                fmt::format("-o {}: one picture needs --at SECONDS; numbered pictures need a name such as "
                            "frames/%04d.png",
                            output.name)};
        if (Result<Done> done = choose_sheet_frames(output); !done) return done;
        if (Result<Done> done = check_field_count(output); !done) return done;
    }
    return Done{};
}

// --resume and --chunk are for numbered pictures only, --from for videos only.
Result<Done> check_parts(const RenderOptions& options, const std::vector<OutputPlan>& outputs) {
    const char* option = options.resume ? "--resume" : options.chunk.empty() ? nullptr : "--chunk";
    for (const OutputPlan& output : outputs) {
        if (!options.from.empty() && output.kind != OutputKind::kVideo)
            return Error{fmt::format("--from: {} is not a video; only videos can be made from pictures", output.name)};
        if (option != nullptr && output.kind != OutputKind::kNumbered)
            return Error{
                fmt::format("{}: {} cannot be made in parts; render numbered pictures such as frames/%04d.png with "
                            "--bits 16, and then the video with --from",
                            option, output.name)};
    }
    return Done{};
}

}  // namespace

stage::Result<std::vector<OutputPlan>> plan_outputs(const RenderOptions& options,
                                                    const stage::SceneDescription& scene) {
    std::vector<OutputPlan> outputs;
    for (const std::string& name : options.outputs) {
        Result<OutputPlan> output = make_plan("-o", name, scene);
        if (!output) return output.error();
        outputs.push_back(std::move(*output));
    }
    if (const Result<Done> done = take_key(options.key, scene, outputs); !done) return done.error();
    if (const Result<Done> done = take_alpha(options.alpha, outputs); !done) return done.error();
    if (const Result<Done> done = take_bits(options.bits, outputs); !done) return done.error();
    if (const Result<Done> done = take_codec(options.codec, outputs); !done) return done.error();
    if (const Result<Done> done = take_sheet(options.sheet, outputs); !done) return done.error();
    if (const Result<Done> done = take_interlace(options.interlace, scene, outputs); !done) return done.error();
    if (const Result<Done> done = check_parts(options, outputs); !done) return done.error();
    if (const Result<Done> done = take_frames(options, scene, outputs); !done) return done.error();
    for (const OutputPlan& output : outputs)
        if (const Result<Done> done = check_name(output, scene); !done) return done.error();
    if (const Result<Done> done = check_files_differ(outputs); !done) return done.error();
    return outputs;
}

}  // namespace tovu
