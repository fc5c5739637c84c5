#include "looks_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "look_table.h"
#include "option_values.h"
#include "plugin_location.h"
#include "stage/frame_rate.h"
#include "stage/output/whole_file.h"
#include "stage/scene/stage.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/scene_reader.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

// Loads the smoke for the defaults and the order of its parameters.
Result<const stage::Plugin*> load_smoke() {
    const stage::StagePtr stage = stage::make_stage({});
    const Result<stage::PluginId> loaded = stage::load_plugin(*stage, smoke_plugin_file());
    if (!loaded) return loaded.error();
    return &stage::plugin(*loaded);
}

// An existing file, or the look that a scene in the current folder would find by this name.
Result<std::filesystem::path> look_file_of(const std::string& name) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(name, ignored)) return std::filesystem::path(name);
    return stage::find_look_file(name, ".");
}

Result<toml::table> look_of(const std::string& name) {
    const Result<std::filesystem::path> file = look_file_of(name);
    if (!file) return file.error();
    if (const auto read = stage::load_look_file(*file); !read) return read.error();
    return parsed_file(*file);
}

std::string default_of(const std::string& key, const stage::Plugin& smoke) {
    const stage::ParameterInfo* parameter = stage::find_parameter(smoke, key.substr(key.rfind('.') + 1));
    if (parameter == nullptr) return "nothing";
    return std::visit(
        [](const auto& value) {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>) return "\"" + value + "\"";
            return fmt::format("{}", value);
        },
        parameter->initial);
}

}  // namespace

Result<Done> list_looks(const PrintLine& print) {
    std::vector<std::filesystem::path> files = stage::look_files("looks");
    for (const std::filesystem::path& file : stage::look_files(stage::shipped_looks_folder())) {
        const auto is_own = [&file](const std::filesystem::path& own) { return own.stem() == file.stem(); };
        if (std::none_of(files.begin(), files.end(), is_own)) files.push_back(file);
    }
    size_t width = 0;
    for (const std::filesystem::path& file : files) width = std::max(width, file.stem().string().size());
    for (const std::filesystem::path& file : files) {
        const Result<stage::LookDescription> look = stage::load_look_file(file);
        if (!look) return look.error();
        print(fmt::format("{:<{}}  {}", file.stem().string(), width, look->purpose));
    }
    return Done{};
}

Result<Done> save_look(const LooksOptions& options, const PrintLine& print, const PrintLine& warn) {
    const Result<const stage::Plugin*> smoke = load_smoke();
    if (!smoke) return smoke.error();
    const Result<stage::SceneDescription> read = stage::load_scene_file(options.scene);
    if (!read) return read.error();
    const std::filesystem::path scene = options.scene;
    std::vector<std::string> warnings;
    Result<toml::table> look = look_of_container(*read, parsed_file(scene), options.container, **smoke, warnings);
    if (!look) return look.error();
    std::filesystem::path file = options.output;
    std::error_code error;
    if (options.output.empty()) {
        file = scene.parent_path() / "looks" / (options.container + ".toml");
        if (std::filesystem::exists(file, error))
            return Error{fmt::format("{}: there is such a look already; name another file with -o", file.string())};
        std::filesystem::create_directories(file.parent_path(), error);
    }
    move_files(*look, scene.parent_path(), file.parent_path());
    if (Result<Done> written = stage::write_whole_file(file, look_text(*look, **smoke)); !written) return written;
    for (const std::string& warning : warnings) warn(warning);
    print(file.string());
    return Done{};
}

Result<Done> diff_looks(const LooksOptions& options, const PrintLine& print) {
    const Result<const stage::Plugin*> smoke = load_smoke();
    if (!smoke) return smoke.error();
    const Result<toml::table> first = look_of(options.first), second = look_of(options.second);
    if (!first) return first.error();
    if (!second) return second.error();
    const std::map<std::string, std::string> before = flat_values(*first), after = flat_values(*second);
    std::map<std::string, std::string> keys = before;
    keys.insert(after.begin(), after.end());
    for (const auto& [key, any_value] : keys) {
        const std::string layer = key.substr(0, key.rfind('.') + 1) + "name";
        if (keys.contains(layer) && before.contains(layer) != after.contains(layer)) {
            if (key == layer)
                print(fmt::format("layer {}: only in {}", any_value,
                                  before.contains(layer) ? options.first : options.second));
            continue;
        }
        const auto value = [&key = key, &smoke](const std::map<std::string, std::string>& values) {
            const auto found = values.find(key);
            return found == values.end() ? default_of(key, **smoke) : found->second;
        };
        if (value(before) != value(after)) print(fmt::format("{}: {} -> {}", key, value(before), value(after)));
    }
    return Done{};
}

Result<Done> retime_look_file(const LooksOptions& options, const PrintLine& print, const PrintLine& warn) {
    double rate = 0.0;
    if (!parse_number(options.rate, rate) || !(rate >= 1.0 && rate <= 1000.0))
        return Error{
            fmt::format("{}: must be frames per second from 1 to 1000, such as 25, 29.97 or 60", options.rate)};
    const Result<const stage::Plugin*> smoke = load_smoke();
    if (!smoke) return smoke.error();
    const Result<std::filesystem::path> file = look_file_of(options.look);
    if (!file) return file.error();
    Result<toml::table> look = look_of(options.look);
    if (!look) return look.error();
    std::vector<std::string> warnings;
    if (Result<Done> done = retime_look(*look, *file, stage::exact_frame_rate(rate), **smoke, warnings); !done)
        return done;
    for (const std::string& warning : warnings) warn(warning);
    if (options.output.empty()) {
        print(look_text(*look, **smoke));
        return Done{};
    }
    move_files(*look, file->parent_path(), std::filesystem::path(options.output).parent_path());
    return stage::write_whole_file(options.output, look_text(*look, **smoke));
}

}  // namespace tovu
