#include "built_in_images.h"

#include "image_reader.h"
#include "look_file.h"
#include "messages.h"

namespace stage {

namespace {

Result<ImageDescriptions> read_catalogue() {
    const std::filesystem::path file = shipped_looks_folder() / "images.toml";
    if (std::error_code ignored; !std::filesystem::exists(file, ignored)) return ImageDescriptions{};
    KeyReader reader{file.string(), file.parent_path(), {}};
    ImageDescriptions images;
    try {
        const toml::table table = toml::parse_file(file.string());
        if (const toml::node* entry = table.get("images")) read_images(reader, {"images", *entry}, 25.0, images);
    } catch (const toml::parse_error& error) {
        report_parse_error(reader, error);
    }
    if (!reader.errors.empty()) return error_of(reader.errors);
    return images;
}

void add_texts(const std::vector<ParameterSetting>& settings, std::set<std::string>& texts) {
    for (const ParameterSetting& setting : settings) {
        if (const auto* text = std::get_if<std::string>(&setting.value)) texts.insert(*text);
    }
}

void add_plate(const std::optional<GeometryDescription>& geometry, std::set<std::string>& names) {
    if (geometry) names.insert(geometry->image);
}

}  // namespace

const Result<ImageDescriptions>& built_in_images() {
    static const Result<ImageDescriptions> images = read_catalogue();
    return images;
}

std::set<std::string> possible_image_names(const SceneDescription& scene) {
    std::set<std::string> names;
    for (const ContainerDescription& container : scene.containers) {
        names.insert(container.texture);
        names.insert(container.more_textures.begin(), container.more_textures.end());
        if (container.light) names.insert(container.light->image);
        add_plate(container.geometry, names);
        add_texts(container.parameters, names);
    }
    for (const TimelineEntry& entry : scene.timeline) {
        add_plate(entry.geometry, names);
        add_texts(entry.parameters, names);
    }
    for (const Track& track : scene.tracks)
        for (const TrackKey& key : track.keys) {
            add_plate(key.geometry, names);
            add_texts({key.setting}, names);
        }
    return names;
}

Result<SceneDescription> with_built_in_images(SceneDescription scene) {
    const Result<ImageDescriptions>& images = built_in_images();
    if (!images) return images.error();
    for (const std::string& name : possible_image_names(scene)) {
        if (const auto image = images->find(name); image != images->end()) scene.images.insert(*image);
    }
    return scene;
}

}  // namespace stage
