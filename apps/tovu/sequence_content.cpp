#include "sequence_content.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "stage/output/whole_file.h"
#include "stage/plugins/plugin.h"
#include "stage/replay/fnv1a.h"
#include "stage/scenefile/input_files.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

using Files = std::vector<std::filesystem::path>;

std::string digest_of(const Files& files) {
    if (files.empty()) return "none";
    stage::Fnv1a digest;
    for (const std::filesystem::path& file : files) digest.add(std::string_view(stage::read_whole_file(file)));
    return fmt::format("{:016x}", digest.value);
}

// A digest of the bytes without the paths, which can differ between the machines of a farm.
std::string files_of_scene(const stage::SceneDescription& scene) {
    Files files = stage::input_files(scene);
    std::erase_if(files, [&](const auto& file) { return file == scene.file || scene.looks.contains(file); });
    return digest_of(files);
}

std::string looks_of_scene(const stage::SceneDescription& scene) {
    std::vector<std::string> texts;
    for (const std::filesystem::path& look : scene.looks)
        texts.push_back(fmt::format("{} {}", look.filename().string(), digest_of({look})));
    std::ranges::sort(texts);
    return texts.empty() ? "none" : fmt::format("{}", fmt::join(texts, ", "));
}

std::string plugins() {
    std::vector<std::string> texts;
    for (const auto& plugin : stage::loaded_plugins())
        texts.push_back(fmt::format("{} {}", plugin->name, digest_of({plugin->path})));
    std::ranges::sort(texts);
    return fmt::format("{}", fmt::join(texts, ", "));
}

}  // namespace

stage::SequenceContent scene_content(const stage::SceneDescription& scene, const RenderOptions& options,
                                     const std::string& renderer) {
    return {
        {"version", TOVU_VERSION},
        {"scene", fmt::format("{} {}", scene.file.filename().string(), digest_of({scene.file}))},
        {"looks", looks_of_scene(scene)},
        {"pictures and meshes", files_of_scene(scene)},
        {"settings", options.settings.empty() ? "none" : fmt::format("{}", fmt::join(options.settings, ", "))},
        {"seed", std::to_string(scene.seed)},
        {"size", fmt::format("{}x{}", scene.size[0], scene.size[1])},
        {"frame rate", fmt::format("{}", scene.frame_rate)},
        {"frames", std::to_string(stage::frame_count(scene))},
        {"samples", std::to_string(scene.samples)},
        {"plug-ins", plugins()},
        {"renderer", renderer},
    };
}

stage::SequenceContent sequence_content(stage::SequenceContent scene, const OutputPlan& output) {
    scene.emplace_back("name", std::filesystem::path(output.name).filename().string());
    scene.emplace_back("bits", std::to_string(output.bits));
    return scene;
}

}  // namespace tovu
