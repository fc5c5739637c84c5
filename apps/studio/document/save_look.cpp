#include "save_look.h"

#include <fmt/format.h>

#include "../../tovu/look_table.h"
#include "stage/output/whole_file.h"
#include "stage/scenefile/scene_reader.h"

namespace tovu {

namespace {

using stage::Error;
using stage::Result;

// The name of the container, or for a layer of a look, of the container that uses the look.
std::string written_container(const stage::SceneDescription& scene, const std::string& name) {
    for (const stage::ContainerDescription& one : scene.containers) {
        if (one.name == name && one.look_container >= 0)
            return scene.containers[static_cast<size_t>(one.look_container)].name;
    }
    return name;
}

}  // namespace

Result<std::vector<std::string>> save_look(const Document& document, const LookToSave& look,
                                           const stage::Plugin& smoke) {
    if (document.kind == DocumentKind::kLook) return Error{"this is a look: save it under another name"};
    std::error_code code;
    const std::filesystem::path file = std::filesystem::absolute(look.file, code).lexically_normal();
    if (look.overwrite == Overwrite::kNo && std::filesystem::exists(file, code))
        return Error{fmt::format("{}: there is such a file already", file.string())};
    const Result<stage::SceneDescription> scene = stage::read_scene(document_text(document), scene_file(document));
    if (!scene) return scene.error();
    std::vector<std::string> warnings;
    Result<toml::table> table = look_of_container(*scene, toml::parse(document_text(document)),
                                                  written_container(*scene, look.container), smoke, warnings);
    if (!table) return table.error();
    if (!look.purpose.empty()) table->insert_or_assign("purpose", look.purpose);
    move_files(*table, document.folder, file.parent_path());
    std::filesystem::create_directories(file.parent_path(), code);
    if (const auto written = stage::write_whole_file(file, look_text(*table, smoke)); !written) return written.error();
    return warnings;
}

}  // namespace tovu
