// A container's parameters over time: at the start, and after each change by the timeline or a track.
#pragma once

#include <string>
#include <vector>

#include "scene_description.h"

namespace stage {

struct ParameterMoment {
    double seconds = 0.0;                             // scene time from which the values apply
    std::vector<ParameterValue> values;               // of every parameter, by index, as as_read returns them
    std::vector<const ParameterSetting*> settings{};  // by index: the setting that gave the value; null for a default
    std::vector<const ParameterSetting*> made{};      // the settings of this moment, the last one of each parameter
};

/// One or more moments in ascending order of time. The first one is the scene's first frame. Between two keys of a
/// track, numbers change in steps of a frame, at most 64. All settings must have passed check_settings and
/// check_blends; the moments point into the scene.
std::vector<ParameterMoment> parameter_moments(const SceneDescription& scene, int32_t container, const Plugin& plugin);

/// Converts a value to the form in which slots are read: Radio as the choice's text, Float as double.
ParameterValue as_read(const ParameterInfo& parameter, const ParameterValue& value);

/// The value of a number parameter; a Bool counts as 0 or 1.
double number_of(const ParameterValue& value);

/// The choice of a Radio, "true" or "false" for a Bool, the text of a text parameter; empty for a number.
std::string text_of(const ParameterValue& value);

}  // namespace stage
