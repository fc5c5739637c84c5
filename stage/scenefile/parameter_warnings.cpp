#include "parameter_warnings.h"

#include <fmt/format.h>

#include "curve_text.h"

namespace stage {

namespace {

constexpr size_t kMinPoints = 2;

// What breaks the format; empty when nothing does.
std::string curve_fault(const CurveFormat& curve, std::string_view text) {
    const auto point_size = static_cast<size_t>(curve.components) + 1;
    std::vector<double> numbers;
    for (const std::string_view word : words_of(text)) {
        numbers.emplace_back();
        if (!parse_number(word, numbers.back())) return fmt::format("\"{}\" is not a number", word);
        if (numbers.back() < curve.range[0] || numbers.back() > curve.range[1])
            return fmt::format("{} is not from {} to {}", word, curve.range[0], curve.range[1]);
    }
    if (numbers.size() % point_size != 0 || numbers.size() < kMinPoints * point_size)
        return fmt::format("it has {} number{}", numbers.size(), numbers.size() == 1 ? "" : "s");
    for (size_t i = point_size; i < numbers.size(); i += point_size) {
        const double before = numbers[i - point_size];
        if (numbers[i] < before || (numbers[i] == before && !curve.steps))
            return fmt::format("position {} does not come after position {}", numbers[i], before);
    }
    return {};
}

std::string text_of(const ParameterInfo& parameter, const ParameterValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* on = std::get_if<bool>(&value)) return *on ? "true" : "false";
    const auto* position = std::get_if<int>(&value);
    return position != nullptr && parameter.kind == ParameterKind::kRadio
               ? parameter.choices.at(static_cast<size_t>(*position))
               : std::string();
}

// The container's values up to a time, and the settings that were made at that time.
struct Moment {
    const Plugin& plugin;
    std::map<std::string, ParameterValue> values{};
    std::map<std::string, const ParameterSetting*> settings{};
};

void warn_of_curve(const ParameterInfo& parameter, const CurveFormat& curve, const ParameterSetting& setting,
                   std::vector<std::string>& warnings) {
    const std::string fault = curve_fault(curve, text_of(parameter, setting.value));
    if (fault.empty()) return;
    warnings.push_back(fmt::format(
        "{}: parameter '{}' takes two points or more, each a position and {} number{}, all from {} to {}, such as "
        "\"{}\"; {}",
        setting.place, parameter.name, curve.components, curve.components == 1 ? "" : "s", curve.range[0],
        curve.range[1], text_of(parameter, parameter.initial), fault));
}

void warn_of_needs(const Moment& moment, const ParameterInfo& parameter, const ParameterNotes& notes,
                   const ParameterSetting& setting, std::vector<std::string>& warnings) {
    const std::string choice = text_of(parameter, setting.value);
    const auto need = notes.needs.find(choice);
    if (need == notes.needs.end()) return;
    const ParameterInfo& needed = *find_parameter(moment.plugin, need->second);
    const auto value = moment.values.find(needed.name);
    if (!text_of(needed, value == moment.values.end() ? needed.initial : value->second).empty()) return;
    const char* quote = parameter.kind == ParameterKind::kRadio ? "\"" : "";
    warnings.push_back(fmt::format("{}: {} = {}{}{} has no effect while '{}' is empty: name {} there", setting.place,
                                   parameter.name, quote, choice, quote, needed.name,
                                   needed.kind == ParameterKind::kImage ? "an image" : "a container"));
}

void warn_of_moment(Moment& moment, const std::vector<ParameterSetting>& settings, const PluginNotes& notes,
                    std::vector<std::string>& warnings) {
    moment.settings.clear();
    for (const ParameterSetting& setting : settings) {
        moment.values[setting.name] = setting.value;
        moment.settings[setting.name] = &setting;
    }
    for (const auto& [name, setting] : moment.settings) {
        const ParameterNotes* noted = find_notes(notes, name);
        if (noted == nullptr) continue;
        const ParameterInfo& parameter = *find_parameter(moment.plugin, name);
        if (noted->curve) warn_of_curve(parameter, *noted->curve, *setting, warnings);
        warn_of_needs(moment, parameter, *noted, *setting, warnings);
    }
}

}  // namespace

void warn_of_settings(const SceneDescription& scene, int32_t container, const Plugin& plugin, const PluginNotes& notes,
                      std::vector<std::string>& warnings) {
    Moment moment{plugin};
    warn_of_moment(moment, scene.containers[static_cast<size_t>(container)].parameters, notes, warnings);
    for (const TimelineEntry& entry : scene.timeline) {
        if (entry.container == container) warn_of_moment(moment, entry.parameters, notes, warnings);
    }
    for (const Track& track : scene.tracks) {
        if (track.container != container || track.property != TrackProperty::kParameter) continue;
        for (const TrackKey& key : track.keys) warn_of_moment(moment, {key.setting}, notes, warnings);
    }
}

}  // namespace stage
