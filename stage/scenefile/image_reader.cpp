#include "image_reader.h"

#include <fmt/format.h>

#include "stage/names.h"
#include "stage/output/frame_names.h"

namespace stage {

namespace {

// Finds the pictures of a pattern. Only the file's name may contain the number; % in a folder's name is a plain
// character.
void read_sequence(KeyReader& reader, const KeyedNode& entry, const std::string& written, ImageDescription& image) {
    const std::filesystem::path pattern = written;
    if (is_frame_pattern(pattern.parent_path().string())) {
        report(reader, entry.node.source(),
               fmt::format("{}: the number belongs into the file's name, not into the folder's", entry.key));
        return;
    }
    const std::filesystem::path folder = (reader.folder / pattern.parent_path()).lexically_normal();
    Result<std::vector<std::filesystem::path>> files = numbered_files(folder, pattern.filename().string());
    if (files)
        image.files = std::move(*files);
    else
        report(reader, entry.node.source(), fmt::format("{}: {}", entry.key, files.error().message));
}

void read_built_in(KeyReader& reader, const KeyedNode& entry, const std::string& name, ImageDescription& image) {
    std::vector<std::string> names;
    for (const auto& [known, built_in] : *reader.built_in_images) {
        names.push_back(known);
        if (known != name) continue;
        image = built_in;
        image.place = place_of(reader, entry.node.source());
        return;
    }
    report(reader, entry.node.source(),
           fmt::format("{}: there is no built-in image '{}', and a file's name has an ending: {}", entry.key, name,
                       name_hint(name, names)));
}

bool is_plain_name(const std::string& written) {
    return written.find_first_of("./%") == std::string::npos;
}

void read_files(KeyReader& reader, const KeyedNode& entry, ImageDescription& image) {
    std::string written;
    if (!read_text(reader, entry, written)) return;
    std::filesystem::path file;
    if (is_plain_name(written) && reader.built_in_images != nullptr)
        read_built_in(reader, entry, written, image);
    else if (is_frame_pattern(written))
        read_sequence(reader, entry, written, image);
    else if (read_file_path(reader, entry, file))
        image.files = {file};
}

const KeyRow<ImageDescription> kImageKeys[] = {
    {"file", read_files},
    {"frame_rate",
     [](KeyReader& r, const KeyedNode& e, ImageDescription& i) { read_number(r, e, 0.001, 1000.0, i.frame_rate); }},
    {"start", [](KeyReader& r, const KeyedNode& e,
                 ImageDescription& i) { read_number(r, e, -kMaxSeconds, kMaxSeconds, i.start); }},
    {"play",
     [](KeyReader& r, const KeyedNode& e, ImageDescription& i) {
         size_t choice = 0;
         if (read_choice(r, e, {"loop", "hold", "once"}, choice)) i.play = static_cast<Play>(choice);
     }},
};

void read_table_of(KeyReader& reader, const std::string& name, const toml::table& table, ImageDescription& image) {
    read_keys(reader, table, fmt::format("the image '{}'", name), kImageKeys, image);
    if (!table.contains("file")) report(reader, table.source(), fmt::format("the image '{}' needs a file", name));
    const auto file = table["file"].value<std::string>();
    if (!file || is_frame_pattern(*file) || image.files.size() > 1) return;
    for (const char* key : {"frame_rate", "start", "play"}) {
        if (table.contains(key))
            report(reader, table.get(key)->source(),
                   fmt::format("{} is for a sequence, whose file has a number in its name, such as wipe%04d.png", key));
    }
}

}  // namespace

void read_images(KeyReader& reader, const KeyedNode& entry, double frame_rate, ImageDescriptions& images) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    for (const auto& [key, node] : entries_as_written(*table)) {
        const std::string name(key->str());
        ImageDescription image;
        image.frame_rate = frame_rate;
        image.place = place_of(reader, node->source());
        if (const toml::table* description = node->as_table())
            read_table_of(reader, name, *description, image);
        else
            read_files(reader, {name.c_str(), *node}, image);
        images[name] = image;
    }
}

std::string read_image_name(KeyReader& reader, const KeyedNode& entry, const SceneDescription& scene) {
    std::string name;
    if (!read_text(reader, entry, name) || scene.images.contains(name)) return name;
    std::vector<std::string> names;
    for (const auto& [known, image] : scene.images) names.push_back(known);
    report(reader, entry.node.source(), fmt::format("unknown image '{}': {}", name, name_hint(name, names)));
    return {};
}

void append_image_keys(std::vector<std::string>& keys) {
    for (const std::string& key : key_names(kImageKeys)) keys.push_back("images.NAME." + key);
}

}  // namespace stage
