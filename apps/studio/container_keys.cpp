#include "container_keys.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "name_field.h"
#include "panel_line.h"
#include "value_field.h"

namespace tovu {

namespace {

using stage::ContainerDescription;
using stage::TrackProperty;
using Edited = std::optional<std::string>;  // TOML on one line

struct Field {
    PanelFrame& frame;
    const ContainerDescription& container;
    float width;
};

struct ContainerKey {
    const char* key;  // name in the container's table
    const char* label;
    const char* sentence;
    std::optional<TrackProperty> property;  // a track of this property overrides the key
    bool is_for_smoke;                      // shown only for containers that draw particles
    bool takes_width;
    Edited (*field)(const Field& field);
};

// Several textures are shown and typed as names separated by commas.
Edited edit_texture(const Field& field) {
    std::string shown = field.container.texture;
    for (const std::string& texture : field.container.more_textures) shown += ", " + texture;
    const auto chosen = name_field(field.frame.targets, "container.texture", shown, field.width,
                                   [&] { return images_to_choose(*field.frame.studio.scene); });
    if (!chosen) return {};
    std::vector<std::string> names;
    for (size_t at = 0; at <= chosen->size();) {
        const size_t end = std::min(chosen->find(',', at), chosen->size());
        const size_t first = std::min(chosen->find_first_not_of(' ', at), end);
        const size_t last = chosen->find_last_not_of(' ', end - 1);
        if (first < end) names.push_back(toml_text_of(chosen->substr(first, last + 1 - first)));
        at = end + 1;
    }
    if (names.empty()) return toml_text_of(std::string("none"));
    return names.size() == 1 ? names.front() : fmt::format("[{}]", fmt::join(names, ", "));
}

Edited edit_blend(const Field& field) {
    const std::vector<std::string> choices = {"alpha", "additive"};  // in the order of stage::Blend
    const auto chosen = choice_buttons(field.frame.targets, "container.blend",
                                       choices[static_cast<size_t>(field.container.blend)], choices, field.width);
    if (!chosen) return {};
    return toml_text_of(*chosen);
}

Edited edit_opacity(const Field& field) {
    float opacity = field.container.opacity;
    if (!ImGui::DragFloat("##value", &opacity, 0.005f, 0.0f, 1.0f, "%.2f", ImGuiSliderFlags_AlwaysClamp)) return {};
    return toml_text_of(static_cast<double>(opacity));
}

Edited edit_depth_test(const Field& field) {
    bool is_on = field.container.depth_test;
    if (!ImGui::Checkbox("##value", &is_on)) return {};
    return toml_text_of(is_on);
}

template <stage::Triple ContainerDescription::*triple>
Edited edit_triple(const Field& field) {
    constexpr float kFar = 1e6f;
    stage::Triple value = field.container.*triple;
    const float speed = triple == &ContainerDescription::scale ? 0.01f : 0.5f;
    if (!ImGui::DragFloat3("##value", value.data(), speed, -kFar, kFar, "%.5g", ImGuiSliderFlags_NoRoundToFormat))
        return {};
    return fmt::format("[{:.6g}]", fmt::join(value, ", "));
}

const ContainerKey kKeys[] = {
    {"texture",
     "Texture",
     "The picture that each particle shows. Several names with commas between them are shared out "
     "evenly.",
     {},
     true,
     false,
     edit_texture},
    {"blend",
     "Blend",
     "Alpha covers what is behind, for smoke and dust. Additive adds light to it, for fire and sparks.",
     {},
     true,
     false,
     edit_blend},
    {"opacity", "Opacity", "How opaque it is with all containers in it, 0 to 1.", TrackProperty::kOpacity, false, false,
     edit_opacity},
    {"depth_test",
     "Depth Test",
     "On, what is nearer to the camera hides it. Off, it is drawn over everything before it.",
     {},
     true,
     false,
     edit_depth_test},
    {"position", "Position X, Y, Z",
     "Where it stands in the container around it, units: X to the right, Y up, Z to the "
     "default camera.",
     TrackProperty::kPosition, false, true, edit_triple<&ContainerDescription::position>},
    {"rotation", "Rotation X, Y, Z", "Degrees about its X, Y and Z axis.", TrackProperty::kRotation, false, true,
     edit_triple<&ContainerDescription::rotation>},
    {"scale", "Scale X, Y, Z", "Factors along its X, Y and Z axis.", TrackProperty::kScale, false, true,
     edit_triple<&ContainerDescription::scale>},
};

bool is_tracked(const stage::SceneDescription& scene, int32_t container, const ContainerKey& key) {
    return key.property && std::any_of(scene.tracks.begin(), scene.tracks.end(), [&](const stage::Track& track) {
               return track.container == container && track.property == *key.property;
           });
}

bool is_shown(const ContainerKey& key, const ContainerDescription& container, const std::string& search) {
    if (key.is_for_smoke && !container.has_plugin && container.look.empty()) return false;
    return has_words(key.label, search) || has_words(key.sentence, search);
}

void show_key(PanelFrame& frame, const ContainerDescription& container, bool tracked, const ContainerKey& key) {
    LineShown line{std::string("container.") + key.key, key.label, std::string(key.key) + " of " + container.name};
    line.is_written = frame.memory.written_keys.contains(key.key);
    line.is_idle = tracked;
    line.takes_width = key.takes_width;
    const LineEvents events = panel_line(frame, line, [&](float width) {
        ImGui::SetNextItemWidth(width);
        if (const Edited edited = key.field({frame, container, width}))
            frame.commands.push_back(SetContainerKey{container.name, key.key, *edited});
    });
    if (events.reset) frame.commands.push_back(SetContainerKey{container.name, key.key, ""});
    if (!events.shows_help) return;
    show_help(frame.memory, line.target, key.label,
              fmt::format("{}\n{}Name in files: {}", key.sentence,
                          tracked ? "No effect now: the scene file moves it, in a track.\n" : "", key.key));
}

}  // namespace

bool show_container_keys(PanelFrame& frame, const std::string& container) {
    const stage::SceneDescription& scene = *frame.studio.scene;
    const auto named = [&](const std::string& name) {
        return std::find_if(scene.containers.begin(), scene.containers.end(),
                            [&](const ContainerDescription& one) { return one.name == name; });
    };
    auto found = named(container);
    if (found == scene.containers.end())
        found = named(container.substr(0, container.rfind('/')));  // "smoke/2" has the keys of "smoke"
    if (found == scene.containers.end()) return false;
    std::vector<const ContainerKey*> keys;
    for (const ContainerKey& key : kKeys)
        if (is_shown(key, *found, frame.memory.search)) keys.push_back(&key);
    if (keys.empty() || !group_header(frame, "Texture, blend, position")) return !keys.empty();
    const auto index = static_cast<int32_t>(found - scene.containers.begin());
    for (const ContainerKey* key : keys) show_key(frame, *found, is_tracked(scene, index, *key), *key);
    return true;
}

}  // namespace tovu
