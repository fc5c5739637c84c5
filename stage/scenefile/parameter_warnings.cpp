#include "parameter_warnings.h"

#include <fmt/format.h>

#include "parameter_moments.h"

namespace stage {

namespace {

void warn_of_curve(const ParameterInfo& parameter, const CurveFormat& curve, const ParameterSetting& setting,
                   std::vector<std::string>& warnings) {
    const Result<std::vector<double>> points = curve_points(curve, text_of(setting.value));
    if (points) return;
    warnings.push_back(fmt::format(
        "{}: parameter '{}' takes two points or more, each a position and {} number{}, all from {} to {}, such as "
        "\"{}\"; {}",
        setting.place, parameter.name, curve.components, curve.components == 1 ? "" : "s", curve.range[0],
        curve.range[1], text_of(parameter.initial), points.error().message));
}

// The container's values at a time, with the notes of the plug-in.
struct NotedMoment {
    const Plugin& plugin;
    const PluginNotes& notes;
    const ParameterMoment& moment;
};

void warn_of_needs(const NotedMoment& noted, const ParameterInfo& parameter, const ParameterNotes& notes,
                   const ParameterSetting& setting, std::vector<std::string>& warnings) {
    const std::string choice = text_of(as_read(parameter, setting.value));
    const auto need = notes.needs.find(choice);
    if (need == notes.needs.end()) return;
    const ParameterInfo& needed = *find_parameter(noted.plugin, need->second);
    if (!text_of(noted.moment.values[static_cast<size_t>(needed.index)]).empty()) return;
    const char* quote = parameter.kind == ParameterKind::kRadio ? "\"" : "";
    warnings.push_back(fmt::format("{}: {} = {}{}{} has no effect while '{}' is empty: name {} there", setting.place,
                                   parameter.name, quote, choice, quote, needed.name,
                                   needed.kind == ParameterKind::kImage ? "an image" : "a container"));
}

void warn_of_moment(const NotedMoment& noted, std::vector<std::string>& warnings) {
    for (const ParameterSetting* setting : noted.moment.made) {
        const ParameterNotes* notes = find_notes(noted.notes, setting->name);
        if (notes == nullptr) continue;
        const ParameterInfo& parameter = *find_parameter(noted.plugin, setting->name);
        if (notes->curve) warn_of_curve(parameter, *notes->curve, *setting, warnings);
        warn_of_needs(noted, parameter, *notes, *setting, warnings);
    }
}

}  // namespace

void warn_of_settings(const SceneDescription& scene, int32_t container, const Plugin& plugin, const PluginNotes& notes,
                      std::vector<std::string>& warnings) {
    for (const ParameterMoment& moment : parameter_moments(scene, container, plugin))
        warn_of_moment({plugin, notes, moment}, warnings);
}

}  // namespace stage
