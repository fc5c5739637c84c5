#include "look_file.h"

#include <fmt/format.h>

#include <algorithm>

#include "built_in_images.h"
#include "container_reader.h"
#include "messages.h"
#include "shipped_files.h"
#include "stage/names.h"

namespace stage {

namespace {

void read_purpose(KeyReader& reader, const KeyedNode& entry, LookDescription& look) {
    if (read_text(reader, entry, look.purpose) && look.purpose.find('\n') != std::string::npos)
        report(reader, entry.node.source(), "purpose must be one line");
}

void read_layers(KeyReader& reader, const KeyedNode& entry, LookDescription& look) {
    for (const toml::table* table : read_tables(reader, entry)) {
        ContainerDescription layer;
        layer.place = place_of(reader, table->source());
        read_layer(reader, *table, "[[layer]]", layer);
        if (!table->contains("name")) report(reader, table->source(), "a layer needs a name, such as name = \"smoke\"");
        if (layer.has_plugin && layer.geometry)
            report_at(
                reader, layer.geometry->place,
                fmt::format("layer '{}' carries a plug-in already: give the shape a layer of its own", layer.name));
        const auto is_same = [&layer](const ContainerDescription& other) { return other.name == layer.name; };
        if (std::any_of(look.layers.begin(), look.layers.end(), is_same))
            report_at(reader, layer.place,
                      fmt::format("there is a layer '{}' already: names are used once", layer.name));
        for (ParameterSetting& setting : layer.parameters) setting.frame_rate = look.rate;
        look.layers.push_back(std::move(layer));
    }
    if (look.layers.empty()) report(reader, entry.node.source(), "a look needs at least one [[layer]]");
}

// The rate is first, since images and layers use it.
const KeyRow<LookDescription> kLookKeys[] = {
    {"purpose", read_purpose},
    {"rate", [](KeyReader& r, const KeyedNode& e, LookDescription& l) { read_frame_rate(r, e, l.rate); }},
    {"images", [](KeyReader& r, const KeyedNode& e, LookDescription& l) { read_images(r, e, l.rate, l.images); }},
    {"layer", read_layers},
};

}  // namespace

std::filesystem::path shipped_looks_folder() {
    return shipped_files_folder() / "looks";
}

Result<std::filesystem::path> find_look_file(const std::string& name, const std::filesystem::path& scene_folder) {
    std::error_code ignored;
    if (name.find('/') != std::string::npos || name.ends_with(".toml")) {
        std::filesystem::path file = (scene_folder / name).lexically_normal();
        if (std::filesystem::is_regular_file(file, ignored)) return file;
        return Error{fmt::format("there is no look file '{}'; relative paths start from the scene file's folder",
                                 file.string())};
    }
    std::vector<std::string> names;
    for (const std::filesystem::path& folder : {scene_folder / "looks", shipped_looks_folder()}) {
        for (const std::filesystem::path& file : look_files(folder)) {
            if (file.stem() == name) return file;
            if (std::find(names.begin(), names.end(), file.stem()) == names.end())
                names.push_back(file.stem().string());
        }
    }
    return Error{fmt::format("unknown look '{}': {}", name, name_hint(name, names))};
}

std::vector<std::filesystem::path> look_files(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code code;
    std::filesystem::directory_iterator entry(folder, code);
    for (; !code && entry != std::filesystem::directory_iterator(); entry.increment(code)) {
        if (entry->path().extension() == ".toml" && entry->path().stem() != "images") files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

Result<LookDescription> load_look_file(const std::filesystem::path& file) {
    const Result<ImageDescriptions>& built_in = built_in_images();
    if (!built_in) return built_in.error();
    KeyReader reader{file.string(), file.parent_path(), {}, &*built_in};
    LookDescription look;
    look.file = file;
    try {
        const toml::table table = toml::parse_file(file.string());
        read_keys(reader, table, "the look", kLookKeys, look);
        for (const char* key : {"purpose", "rate", "layer"}) {
            if (!table.contains(key)) report_at(reader, file.string() + ":1:1", fmt::format("a look needs '{}'", key));
        }
    } catch (const toml::parse_error& error) {
        report_parse_error(reader, error);
    }
    if (!reader.errors.empty()) return error_of(reader.errors);
    return look;
}

}  // namespace stage
