#include "lint_command.h"

#include <fmt/format.h>

#include <filesystem>

#include "stage/lint/lint.h"
#include "stage/output/whole_file.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/scene_reader.h"

namespace tovu {

using stage::Result;
using stage::SceneDescription;

namespace {

Result<SceneDescription> scene_of_look(const std::filesystem::path& file) {
    const Result<stage::LookDescription> look = stage::load_look_file(file);
    if (!look) return look.error();
    const std::string scene = fmt::format("frame_rate = {}\nlength = 60\n[[container]]\nname = \"look\"\nlook = '{}'\n",
                                          look->rate, std::filesystem::absolute(file).string());
    return stage::read_scene(scene, file);
}

// A file with layers is a look, any other file is a scene. If there is no such file, `name` is the name of a look.
Result<SceneDescription> load(const std::string& name) {
    std::error_code ignored;
    if (std::filesystem::exists(name, ignored)) {
        const std::string text = '\n' + stage::read_whole_file(name);
        const bool is_look = text.find("\n[[layer]]") != std::string::npos || text.find("\nlayer") != std::string::npos;
        return is_look ? scene_of_look(name) : stage::load_scene_file(name);
    }
    if (name.find_first_of("./") != std::string::npos) return stage::load_scene_file(name);
    const Result<std::filesystem::path> look = stage::find_look_file(name, ".");
    return look ? scene_of_look(*look) : Result<SceneDescription>(look.error());
}

}  // namespace

Result<std::vector<std::string>> lint_file(const LintOptions& options) {
    const Result<SceneDescription> scene = load(options.scene);
    if (!scene) return scene.error();
    const Result<stage::BuiltScene> built = stage::build_scene(*scene, options.plugin);
    if (!built) return built.error();
    std::vector<std::string> lines = built->warnings;
    for (std::string& line : stage::lint_scene(*built)) lines.push_back(std::move(line));
    return lines;
}

}  // namespace tovu
