#include "parameter_check.h"

#include <fmt/format.h>

#include "built_in_images.h"
#include "stage/names.h"
#include "stage/plugins/parameter_values.h"

namespace stage {

namespace {

// Checks that the container or image that the parameter names is in the scene.
Result<Done> check_object(const SceneDescription& scene, const ParameterInfo& parameter, const std::string& name) {
    if (name.empty()) return Done{};
    std::vector<std::string> known;
    if (parameter.kind == ParameterKind::kContainer) {
        for (const ContainerDescription& container : scene.containers) known.push_back(container.name);
    } else if (parameter.kind == ParameterKind::kImage) {
        known = image_names(scene);
    } else {
        return Done{};
    }
    if (contains(known, name)) return Done{};
    return Error{fmt::format("parameter '{}' names the unknown {} '{}': {}", parameter.name,
                             parameter.kind == ParameterKind::kContainer ? "container" : "image", name,
                             name_hint(name, known))};
}

}  // namespace

void check_settings(const SceneDescription& scene, const Plugin& plugin, const std::vector<ParameterSetting>& settings,
                    std::vector<std::string>& errors) {
    for (const ParameterSetting& setting : settings) {
        const ParameterInfo* parameter = find_parameter(plugin, setting.name);
        if (parameter == nullptr) {
            errors.push_back(setting.place + ": " + unknown_parameter(plugin, setting.name).message);
            continue;
        }
        const ParameterValue& value = setting.value;
        if (const Result<Done> checked = check_parameter(*parameter, value); !checked) {
            errors.push_back(setting.place + ": " + checked.error().message);
            continue;
        }
        if (const auto* name = std::get_if<std::string>(&value)) {
            if (const Result<Done> checked = check_object(scene, *parameter, *name); !checked)
                errors.push_back(setting.place + ": " + checked.error().message);
        }
    }
}

void check_button(const Plugin& plugin, const std::string& button, const Place& place,
                  std::vector<std::string>& errors) {
    if (!button.empty() && find_button(plugin, button) == nullptr)
        errors.push_back(place + ": " + unknown_button(plugin, button).message);
}

std::vector<std::string> image_names(const SceneDescription& scene) {
    std::vector<std::string> names;
    for (const auto& [name, image] : scene.images) names.push_back(name);
    if (const auto& built_in = built_in_images())
        for (const auto& [name, image] : *built_in)
            if (!scene.images.contains(name)) names.push_back(name);
    return names;
}

bool is_image_name(const SceneDescription& scene, const std::string& name) {
    return contains(image_names(scene), name);
}

}  // namespace stage
