#include "parameter_moments.h"

#include <algorithm>
#include <cmath>

#include "parameter_track.h"

namespace stage {

namespace {

constexpr double kMostSteps = 64.0;  // largest number of steps between two keys of a track

// A parameter's new value from a time on.
struct Change {
    double seconds;
    const ParameterSetting* setting;
    ParameterValue value;
    bool made = true;  // false for steps between the keys of a track
};

void add_settings(std::vector<Change>& changes, double seconds, const std::vector<ParameterSetting>& settings) {
    for (const ParameterSetting& setting : settings) changes.push_back({seconds, &setting, setting.value});
}

// Adds the keys of a track and steps between them. The first key applies from the start; a step lasts a frame or more.
void add_track(std::vector<Change>& changes, const Track& track, const SceneDescription& scene, const Plugin& plugin) {
    const ParameterInfo& parameter = *find_parameter(plugin, track.parameter);
    const bool is_number = parameter.kind == ParameterKind::kInt || parameter.kind == ParameterKind::kFloat;
    changes.push_back({-scene.prewarm, &track.keys[0].setting, track.keys[0].setting.value});
    for (size_t i = 1; i < track.keys.size(); ++i) {
        const TrackKey& key = track.keys[i];
        const double start = track.keys[i - 1].time, time = key.time - start;
        const double steps = std::clamp(std::round(time * scene.frame_rate), 1.0, kMostSteps);
        for (double step = 1.0; is_number && key.ease != Ease::kStep && step < steps; ++step) {
            const double seconds = start + time * step / steps;
            changes.push_back({seconds, &key.setting, parameter_value(track, parameter, seconds), false});
        }
        changes.push_back({key.time, &key.setting, key.setting.value});
    }
}

void apply(ParameterMoment& moment, const Change& change, const Plugin& plugin) {
    const ParameterInfo& parameter = *find_parameter(plugin, change.setting->name);
    const auto index = static_cast<size_t>(parameter.index);
    std::erase(moment.made, moment.settings[index]);
    if (change.made) moment.made.push_back(change.setting);
    moment.settings[index] = change.setting;
    moment.values[index] = as_read(parameter, change.value);
}

}  // namespace

ParameterValue as_read(const ParameterInfo& parameter, const ParameterValue& value) {
    const auto* whole = std::get_if<int>(&value);
    if (whole == nullptr) return value;
    if (parameter.kind == ParameterKind::kFloat) return static_cast<double>(*whole);
    if (parameter.kind == ParameterKind::kRadio) return parameter.choices.at(static_cast<size_t>(*whole));
    return value;
}

double number_of(const ParameterValue& value) {
    if (const auto* on = std::get_if<bool>(&value)) return *on ? 1.0 : 0.0;
    if (const auto* whole = std::get_if<int>(&value)) return *whole;
    const auto* number = std::get_if<double>(&value);
    return number == nullptr ? 0.0 : *number;
}

std::string text_of(const ParameterValue& value) {
    if (const auto* on = std::get_if<bool>(&value)) return *on ? "true" : "false";
    const auto* text = std::get_if<std::string>(&value);
    return text == nullptr ? std::string() : *text;
}

std::vector<ParameterMoment> parameter_moments(const SceneDescription& scene, int32_t container, const Plugin& plugin) {
    std::vector<Change> changes;
    add_settings(changes, -scene.prewarm, scene.containers[static_cast<size_t>(container)].parameters);
    for (const TimelineEntry& entry : scene.timeline)
        if (entry.container == container) add_settings(changes, entry.time, entry.parameters);
    for (const Track& track : scene.tracks)
        if (track.container == container && track.property == TrackProperty::kParameter)
            add_track(changes, track, scene, plugin);
    std::stable_sort(changes.begin(), changes.end(),
                     [](const Change& a, const Change& b) { return a.seconds < b.seconds; });

    ParameterMoment moment{-scene.prewarm, {}};
    for (const ParameterInfo& parameter : plugin.parameters) moment.values.push_back(parameter.initial);
    moment.settings.resize(plugin.parameters.size());
    std::vector<ParameterMoment> moments;
    for (const Change& change : changes) {
        if (change.seconds > moment.seconds) {
            moments.push_back(moment);
            moment.seconds = change.seconds;
            moment.made.clear();
        }
        apply(moment, change, plugin);
    }
    moments.push_back(moment);
    return moments;
}

}  // namespace stage
