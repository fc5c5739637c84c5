#include "texture_variants.h"

#include <fmt/format.h>

#include <algorithm>

namespace stage {

namespace {

/// Describes the split of the container `index` into `count` containers, which follow each other.
struct Split {
    size_t index;
    int32_t count;
    const Plugin& plugin;
    const BirthNotes& births;
};

int32_t share(const Split& split, int32_t variant, int32_t whole) {
    return whole / split.count + (variant < whole % split.count ? 1 : 0);
}

void share_setting(const Split& split, int32_t variant, ParameterSetting& setting) {
    const auto* whole = std::get_if<int>(&setting.value);
    if (setting.name == split.births.number)
        setting.value = share(split, variant, *whole);
    else if (setting.name == split.births.rate)
        setting.value = (whole != nullptr ? *whole : std::get<double>(setting.value)) / split.count;
}

ContainerDescription variant_of(const ContainerDescription& original, const Split& split, int32_t variant) {
    ContainerDescription container = original;
    container.more_textures.clear();
    container.variants = variant == 0 ? split.count : 0;
    if (variant > 0) {
        container.name = fmt::format("{}/{}", original.name, variant + 1);
        container.texture = original.more_textures[static_cast<size_t>(variant) - 1];
    }
    for (const std::string& shared : {split.births.rate, split.births.number}) {
        const auto is_it = [&](const ParameterSetting& setting) { return setting.name == shared; };
        if (std::none_of(container.parameters.begin(), container.parameters.end(), is_it))
            container.parameters.push_back({shared, find_parameter(split.plugin, shared)->initial, container.place});
    }
    for (ParameterSetting& setting : container.parameters) share_setting(split, variant, setting);
    return container;
}

void divide(const Split& split, int32_t variant, TimelineEntry& entry) {
    for (ParameterSetting& setting : entry.parameters) share_setting(split, variant, setting);
    entry.burst = share(split, variant, entry.burst);
}

void divide(const Split& split, int32_t variant, Track& track) {
    for (TrackKey& key : track.keys) share_setting(split, variant, key.setting);
}

void shift_index(const Split& split, int32_t& container) {
    if (container > static_cast<int32_t>(split.index)) container += split.count - 1;
}

/// Replaces each change of the container by one for each variant. Changes: a vector of timeline entries or tracks.
template <class Changes>
void split_changes(const Split& split, Changes& changes) {
    Changes all;
    for (auto& change : changes) {
        const bool is_for_it = change.container == static_cast<int32_t>(split.index);
        shift_index(split, change.container);
        for (int32_t variant = 0; variant < (is_for_it ? split.count : 1); ++variant) {
            all.push_back(change);
            if (!is_for_it) continue;
            all.back().container += variant;
            divide(split, variant, all.back());
        }
    }
    changes = std::move(all);
}

void split_container(SceneDescription& scene, std::vector<PluginId>& plugins, const Split& split) {
    for (ContainerDescription& container : scene.containers) {
        shift_index(split, container.parent);
        shift_index(split, container.look_container);
    }
    const auto place = scene.containers.begin() + static_cast<std::ptrdiff_t>(split.index);
    std::vector<ContainerDescription> variants;
    variants.reserve(static_cast<size_t>(split.count));
    for (int32_t i = 0; i < split.count; ++i) variants.push_back(variant_of(*place, split, i));
    scene.containers.insert(scene.containers.erase(place), variants.begin(), variants.end());
    plugins.insert(plugins.begin() + static_cast<std::ptrdiff_t>(split.index), variants.size() - 1,
                   plugins[split.index]);
    split_changes(split, scene.timeline);
    split_changes(split, scene.tracks);
}

bool is_taken(const SceneDescription& scene, const std::string& name) {
    return std::any_of(scene.containers.begin(), scene.containers.end(),
                       [&](const ContainerDescription& one) { return one.name == name; });
}

void check_variants(const SceneDescription& scene, const std::vector<PluginId>& plugins,
                    const std::map<PluginId, PluginNotes>& notes, std::vector<std::string>& errors) {
    for (size_t i = 0; i < scene.containers.size(); ++i) {
        const ContainerDescription& container = scene.containers[i];
        if (container.more_textures.empty() || !container.look.empty()) continue;
        if (!container.has_plugin)
            errors.push_back(container.texture_place + ": several textures are for a container that carries a plug-in");
        else if (plugins[i] >= 0 && !notes.at(plugins[i]).births)
            errors.push_back(
                fmt::format("{}: the notes beside {} do not say which of its parameters births depend on: give the "
                            "container one texture",
                            container.texture_place, plugin(plugins[i]).name));
        for (size_t variant = 2; variant <= container.more_textures.size() + 1; ++variant) {
            if (const std::string name = fmt::format("{}/{}", container.name, variant); is_taken(scene, name))
                errors.push_back(fmt::format("{}: the container of texture {} would be '{}', which is there already",
                                             container.texture_place, variant, name));
        }
    }
}

}  // namespace

void expand_texture_variants(SceneDescription& scene, std::vector<PluginId>& plugins,
                             const std::map<PluginId, PluginNotes>& notes, std::vector<std::string>& errors) {
    check_variants(scene, plugins, notes, errors);
    if (!errors.empty()) return;
    for (size_t i = 0; i < scene.containers.size(); ++i) {
        const auto count = static_cast<int32_t>(scene.containers[i].more_textures.size()) + 1;
        if (count > 1 && plugins[i] >= 0)
            split_container(scene, plugins, {i, count, plugin(plugins[i]), *notes.at(plugins[i]).births});
    }
}

}  // namespace stage
