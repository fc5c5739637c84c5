#include "parameter_override.h"

#include <fmt/format.h>

#include <algorithm>

#include "container_reader.h"
#include "stage/names.h"

namespace stage {

namespace {

bool is_tracked(const SceneDescription& scene, const ContainerDescription& container, const std::string& parameter) {
    return std::any_of(scene.tracks.begin(), scene.tracks.end(), [&](const Track& track) {
        return track.parameter == parameter && &scene.containers[static_cast<size_t>(track.container)] == &container;
    });
}

}  // namespace

Result<Done> override_parameter(SceneDescription& scene, const std::string& assignment) {
    const Place place = "--set " + assignment;
    const size_t equals = assignment.find('=');
    const size_t dot = assignment.rfind('.', equals);
    if (equals == std::string::npos || dot == std::string::npos || dot == 0 || dot + 1 == equals)
        return Error{place + ": must be container.parameter=value, such as --set smoke.birth_rate=200"};
    const std::string container = assignment.substr(0, dot);
    const std::string name = assignment.substr(dot + 1, equals - dot - 1);
    const std::string written = assignment.substr(equals + 1);
    KeyReader reader{place, {}, {}};
    std::vector<ParameterSetting> settings;
    try {
        const toml::table table = toml::parse(fmt::format("settings = {{ value = {} }}", written));
        read_settings(reader, {"settings", *table.get("settings")}, settings);
    } catch (const toml::parse_error&) {
        settings.push_back({name, written, place});
    }
    if (settings.size() != 1) return Error{place + ": the value must be a number, true, false or a text"};
    settings[0].name = name;
    settings[0].place = place;
    std::vector<std::string> names;
    bool found = false;
    for (ContainerDescription& candidate : scene.containers) {
        if (!candidate.has_plugin) continue;
        names.push_back(candidate.name);
        const auto look_container = static_cast<size_t>(candidate.look_container);
        const bool is_layer_of_it = candidate.look_container >= 0 && scene.containers[look_container].name == container;
        if (candidate.name != container && !is_layer_of_it) continue;
        if (is_tracked(scene, candidate, name))
            return Error{fmt::format("{}: a [[track]] of the scene moves '{}'; change its keys", place, name)};
        candidate.parameters.push_back(settings[0]);
        found = true;
    }
    if (found) return Done{};
    return Error{
        fmt::format("{}: no container '{}' carries a plug-in: {}", place, container, name_hint(container, names))};
}

}  // namespace stage
