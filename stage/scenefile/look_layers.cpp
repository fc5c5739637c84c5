#include "look_layers.h"

#include <fmt/format.h>

#include "container_reader.h"
#include "look_file.h"
#include "stage/names.h"

namespace stage {

namespace {

std::vector<std::string> layer_names(const LookDescription& look) {
    std::vector<std::string> names;
    for (const ContainerDescription& layer : look.layers) names.push_back(layer.name);
    return names;
}

// The scene's name of an object of the look. Names that are neither an image nor a layer of the look stay unchanged.
std::string name_in_scene(const std::string& name, const LookDescription& look, const ContainerDescription& container) {
    if (look.images.contains(name)) return container.look + "." + name;
    if (contains(layer_names(look), name)) return container.name + "." + name;
    return name;
}

// Replaces names of images and layers of the look by their names in the scene, also in text values of parameters.
void rename_objects(ContainerDescription& layer, const LookDescription& look, const ContainerDescription& container) {
    const auto rename_image = [&](std::string& image) {
        if (look.images.contains(image)) image = container.look + "." + image;
    };
    rename_image(layer.texture);
    for (std::string& texture : layer.more_textures) rename_image(texture);
    if (layer.light) rename_image(layer.light->image);
    if (layer.geometry) rename_image(layer.geometry->image);
    for (ParameterSetting& setting : layer.parameters) {
        if (auto* text = std::get_if<std::string>(&setting.value)) *text = name_in_scene(*text, look, container);
    }
}

// Applies the container's keys for all layers, then its keys for this layer.
void override_layer(KeyReader& reader, const LookUse& use, ContainerDescription& layer, const std::string& name) {
    const toml::table* overrides = use.overrides == nullptr ? nullptr : use.overrides->as_table();
    const toml::node* own = overrides == nullptr ? nullptr : overrides->get(name);
    KeyReader reported = reader;  // a copy, since mistakes of the container were already reported
    if (layer.has_plugin) read_layer_wide_keys(reported, use.table, layer);
    const toml::table* keys = own == nullptr ? nullptr : read_table(reader, {name.c_str(), *own});
    if (keys == nullptr) return;
    const std::string kept = layer.name;
    read_layer(reader, *keys, fmt::format("[layers.{}]", name), layer);
    if (const toml::node* other = keys->get("name"))
        report(reader, other->source(), "a layer keeps the name that it has in its look: leave 'name' out");
    layer.name = kept;
}

void check_overrides(KeyReader& reader, const LookUse& use, const LookDescription& look) {
    const toml::table* overrides = use.overrides == nullptr ? nullptr : read_table(reader, {"layers", *use.overrides});
    if (overrides == nullptr) return;
    for (const auto& [key, node] : entries_as_written(*overrides)) {
        const std::string name(key->str());
        if (!contains(layer_names(look), name))
            report(reader, key->source(),
                   fmt::format("unknown layer '{}': {}", name, name_hint(name, layer_names(look))));
    }
}

// Indices of the layers with a plug-in of the container's look.
std::vector<int32_t> layers_with_plugins(const SceneDescription& scene, int32_t container) {
    std::vector<int32_t> layers;
    for (size_t i = 0; i < scene.containers.size(); ++i) {
        if (scene.containers[i].look_container == container && scene.containers[i].has_plugin)
            layers.push_back(static_cast<int32_t>(i));
    }
    return layers;
}

bool is_for_plugin(const TimelineEntry& entry) {
    return !entry.parameters.empty() || !entry.press.empty() || entry.burst > 0;
}

bool is_for_plugin(const Track& track) {
    return track.property == TrackProperty::kParameter;
}

// Change: TimelineEntry or Track.
template <class Change>
void copy_to_layers(const SceneDescription& scene, std::vector<Change>& changes) {
    std::vector<Change> all;
    for (Change& change : changes) {
        const bool has_look =
            change.container >= 0 && !scene.containers[static_cast<size_t>(change.container)].look.empty();
        if (!has_look || !is_for_plugin(change)) {
            all.push_back(std::move(change));
            continue;
        }
        for (const int32_t layer : layers_with_plugins(scene, change.container)) {
            all.push_back(change);
            all.back().container = layer;
        }
    }
    changes = std::move(all);
}

}  // namespace

void add_look_layers(KeyReader& reader, const LookUse& use, SceneDescription& scene) {
    const auto index = static_cast<int32_t>(scene.containers.size()) - 1;
    const ContainerDescription container = scene.containers.back();
    const Result<std::filesystem::path> file = find_look_file(container.look, reader.folder);
    if (!file) return report_at(reader, use.place, file.error().message);
    Result<LookDescription> look = load_look_file(*file);
    if (!look) {
        if (scene.looks.insert(*file).second) reader.errors.push_back(look.error().message);
        return;
    }
    scene.looks.insert(*file);
    for (const auto& [name, image] : look->images) scene.images[container.look + "." + name] = image;
    check_overrides(reader, use, *look);
    std::vector<ContainerDescription> layers = look->layers;
    for (ContainerDescription& layer : layers) {
        const std::string name = layer.name;
        layer.name = container.name + "." + name;
        layer.parent = layer.look_container = index;
        rename_objects(layer, *look, container);
        override_layer(reader, use, layer, name);
        scene.containers.push_back(std::move(layer));
    }
}

void copy_changes_to_layers(SceneDescription& scene) {
    copy_to_layers(scene, scene.timeline);
    copy_to_layers(scene, scene.tracks);
}

}  // namespace stage
