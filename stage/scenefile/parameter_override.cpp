#include "parameter_override.h"

#include <fmt/format.h>

#include "container_reader.h"
#include "stage/names.h"

namespace stage {

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
    for (ContainerDescription& candidate : scene.containers) {
        if (candidate.name == container && candidate.has_plugin) {
            candidate.parameters.push_back(settings[0]);
            return Done{};
        }
        if (candidate.has_plugin) names.push_back(candidate.name);
    }
    return Error{
        fmt::format("{}: no container '{}' carries a plug-in: {}", place, container, name_hint(container, names))};
}

}  // namespace stage
