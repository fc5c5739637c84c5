#include "scene_rate.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "parameter_moments.h"
#include "rate_conversion.h"

namespace stage {

namespace {

constexpr double kNoLimit = std::numeric_limits<double>::infinity();

// A converted parameter, with its written value and the value that was set last.
struct Converting {
    const ParameterInfo& parameter;
    RateValue value;   // at the scene's values_rate, without limits
    double set = 0.0;  // current value of the instance
    Place place;       // where the value was written
    bool is_reported = false;
};

using State = std::vector<Converting>;

double values_rate(const SceneDescription& scene) {
    return scene.values_rate > 0.0 ? scene.values_rate : scene.frame_rate;
}

State initial_state(const Plugin& plugin, const PluginNotes& notes, const Place& place) {
    State state;
    for (const ParameterNotes& note : notes.parameters) {
        if (note.conversion.empty() || note.conversion == "reported") continue;
        const ParameterInfo& parameter = *find_parameter(plugin, note.name);
        const double initial = number_of(parameter.initial);
        state.push_back({parameter, {note.conversion, initial, -kNoLimit, kNoLimit}, initial, place});
    }
    return state;
}

// Stores the value of a setting. False if its parameter is not converted.
bool take_value(State& state, const ParameterSetting& setting) {
    for (Converting& one : state) {
        if (one.parameter.name != setting.name) continue;
        one.value.value = one.set = number_of(setting.value);
        one.place = setting.place;
        one.is_reported = false;
        return true;
    }
    return false;
}

std::vector<RateValue> values_of(const State& state) {
    std::vector<RateValue> values;
    for (const Converting& one : state) values.push_back(one.value);
    return values;
}

std::string drag_that_remains(double held, double wanted, double frame_rate) {
    const auto kept = [frame_rate](double drag) { return 100.0 * std::pow(1.0 - drag / 1000.0, frame_rate); };
    return fmt::format("in a second {:.2g} % of a velocity remain, instead of {:.2g} %", kept(held), kept(wanted));
}

void warn_of_held(const Converting& one, const RateValue& held, double wanted, double frame_rate,
                  std::vector<std::string>& warnings) {
    const std::string remains = held.kind == "drag"
                                    ? drag_that_remains(held.value, wanted, frame_rate)
                                    : fmt::format("{:.3g} times as much is needed", wanted / held.value);
    warnings.push_back(fmt::format("{}: {} is {:.4g} at {:.4g} frames a second, out of its range: held at {:.4g}; {}",
                                   one.place, one.parameter.name, wanted, frame_rate, held.value, remains));
}

// Converts the values and returns settings for those that differ from the current values of the instance.
std::vector<ParameterSetting> converted(State& state, const SceneDescription& scene,
                                        std::vector<std::string>& warnings) {
    const double ratio = scene.frame_rate / values_rate(scene);
    std::vector<RateValue> wanted = values_of(state), held = wanted;
    for (size_t i = 0; i < held.size(); ++i) {
        held[i].minimum = state[i].parameter.minimum;
        held[i].maximum = state[i].parameter.maximum;
    }
    convert_rate(wanted, ratio);
    convert_rate(held, ratio);
    std::vector<ParameterSetting> settings;
    for (size_t i = 0; i < held.size(); ++i) {
        Converting& one = state[i];
        const bool is_limit = held[i].value == held[i].minimum || held[i].value == held[i].maximum;
        if (is_limit && held[i].value != wanted[i].value && !one.is_reported) {
            warn_of_held(one, held[i], wanted[i].value, scene.frame_rate, warnings);
            one.is_reported = true;
        }
        if (held[i].value == one.set) continue;
        one.set = held[i].value;
        settings.push_back({one.parameter.name, one.set, one.place});
    }
    return settings;
}

// Replaces the value of settings with this name, or appends the setting.
void put(std::vector<ParameterSetting>& settings, const ParameterSetting& setting) {
    for (ParameterSetting& old : settings) {
        if (old.name == setting.name) old.value = setting.value;
    }
    const auto is_there = [&setting](const ParameterSetting& old) { return old.name == setting.name; };
    if (std::none_of(settings.begin(), settings.end(), is_there)) settings.push_back(setting);
}

// Converts each key of a track, together with the initial values of the other parameters.
void convert_keys(Track& track, State state, const SceneDescription& scene, std::vector<std::string>& warnings) {
    for (TrackKey& key : track.keys) {
        if (!take_value(state, key.setting)) return;
        for (const ParameterSetting& setting : converted(state, scene, warnings))
            if (setting.name == track.parameter) key.setting.value = setting.value;
    }
}

void warn_of_unconverted(const ContainerDescription& container, const PluginNotes& notes, double made_at,
                         double frame_rate, std::vector<std::string>& warnings) {
    for (const ParameterNotes& note : notes.parameters) {
        if (note.conversion != "reported") continue;
        const ParameterSetting* last = nullptr;
        for (const ParameterSetting& setting : container.parameters)
            if (setting.name == note.name) last = &setting;
        if (last != nullptr && last->value == ParameterValue(true))
            warnings.push_back(fmt::format(
                "{}: what {} does at {:.4g} frames a second differs a little from {:.4g}, and is not converted",
                last->place, note.name, frame_rate, made_at));
    }
}

}  // namespace

void convert_container_rate(SceneDescription& scene, int32_t container, const Plugin& plugin, const PluginNotes& notes,
                            std::vector<std::string>& warnings) {
    ContainerDescription& description = scene.containers[static_cast<size_t>(container)];
    State state = initial_state(plugin, notes, description.place);
    const double made_at = values_rate(scene);
    double look_rate = made_at;
    for (const ParameterSetting& setting : description.parameters) {
        if (setting.frame_rate == 0.0) continue;
        look_rate = setting.frame_rate;
        take_value(state, setting);
    }
    if (look_rate == made_at && made_at == scene.frame_rate) return;
    std::vector<RateValue> values = values_of(state);
    convert_rate(values, made_at / look_rate);
    for (size_t i = 0; i < values.size(); ++i) state[i].value.value = values[i].value;
    for (const ParameterSetting& setting : description.parameters)
        if (setting.frame_rate == 0.0) take_value(state, setting);
    warn_of_unconverted(description, notes, look_rate, scene.frame_rate, warnings);
    for (const ParameterSetting& setting : converted(state, scene, warnings)) description.parameters.push_back(setting);
    const State initial = state;
    for (TimelineEntry& entry : scene.timeline) {
        if (entry.container != container) continue;
        bool changes = false;
        for (const ParameterSetting& setting : entry.parameters) changes |= take_value(state, setting);
        if (!changes) continue;
        for (const ParameterSetting& setting : converted(state, scene, warnings)) put(entry.parameters, setting);
    }
    for (Track& track : scene.tracks)
        if (track.container == container) convert_keys(track, initial, scene, warnings);
}

}  // namespace stage
