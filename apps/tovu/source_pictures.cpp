#include "source_pictures.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "sequence_content.h"
#include "stage/file_ending.h"
#include "stage/output/frame_names.h"

namespace tovu {

namespace {

using stage::Error;
using stage::Result;

// Entries of the manifest that are not compared: the machine that rendered the pictures, and the format of their files.
constexpr std::array<std::string_view, 4> kNotCompared = {"plug-ins", "renderer", "name", "bits"};

stage::SequenceContent compared_content(stage::SequenceContent content) {
    std::erase_if(content,
                  [](const auto& entry) { return std::ranges::find(kNotCompared, entry.first) != kNotCompared.end(); });
    return content;
}

bool has_16_bits(const stage::SequenceContent& content) {
    return std::ranges::find(content, stage::SequenceContent::value_type{"bits", "16"}) != content.end();
}

}  // namespace

std::string ranges_text(const std::vector<int>& numbers) {
    std::vector<std::string> ranges;
    for (size_t i = 0; i < numbers.size();) {
        size_t end = i + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
        ranges.push_back(end == i + 1 ? std::to_string(numbers[i])
                                      : fmt::format("{}-{}", numbers[i], numbers[end - 1]));
        i = end;
    }
    return fmt::format("{}", fmt::join(ranges, ","));
}

Result<std::vector<int>> missing_frames(const std::string& pattern, const FrameRange& range) {
    const Result<stage::SequenceManifest> manifest = stage::read_manifest(pattern);
    if (!manifest) return manifest.error();
    std::vector<int> missing;
    for (int frame = range.first; frame <= range.last; ++frame)
        if (!contains(manifest->ranges, frame) || !stage::is_whole_picture(*stage::frame_name(pattern, frame)))
            missing.push_back(frame);
    return missing;
}

Result<stage::PictureSequence> lock_source_pictures(const RenderPlan& plan, const RenderOptions& options) {
    const auto wrong = [&](const std::string& problem) { return Error{"--from " + problem}; };
    if (stage::file_ending(options.from) != ".png")
        return wrong(options.from + ": must be numbered PNG files of 16 bits, such as frames/%04d.png");
    const Result<stage::SequenceManifest> manifest = stage::read_manifest(options.from);
    if (!manifest) return wrong(manifest.error().message);
    const std::vector<std::string> differences = stage::content_differences(
        compared_content(manifest->content), compared_content(scene_content(plan.scene, options, "")));
    if (!differences.empty())
        return wrong(fmt::format("{}: these pictures were made from something else: {}", options.from,
                                 fmt::join(differences, ", ")));
    if (!has_16_bits(manifest->content))
        return wrong(options.from + ": these pictures have 8 bits; render them with --bits 16");
    const Result<std::vector<int>> missing = missing_frames(options.from, plan.frames);
    if (!missing) return wrong(missing.error().message);
    if (!missing->empty())
        return wrong(fmt::format("{}: these frames are missing or incomplete: {}; render them with --resume",
                                 options.from, ranges_text(*missing)));
    Result<stage::PictureSequence> sequence =
        stage::PictureSequence::begin(options.from, manifest->content, plan.frames, true);
    return sequence ? std::move(sequence) : wrong(sequence.error().message);
}

}  // namespace tovu
