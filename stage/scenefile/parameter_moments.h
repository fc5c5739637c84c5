// A container's parameters over time: at the start, and after each change by the timeline or a track.
#pragma once

#include <string>
#include <vector>

#include "scene_description.h"

namespace stage {

struct ParameterMoment {
    double seconds = 0.0;                             // scene time from which the values hold
    std::vector<ParameterValue> values;               // by index, of every parameter, as reading gives them
    std::vector<const ParameterSetting*> settings{};  // by index: what set the value, null for a default
    std::vector<const ParameterSetting*> made{};      // the settings of this moment, the last one of each parameter
};

/// One or more, each later than the one before; the first is that of the scene's first frame. Between two keys of a
/// track, numbers change in steps of a frame, at most 64. All settings must have passed check_settings and
/// check_blends; the moments point into the scene.
std::vector<ParameterMoment> parameter_moments(const SceneDescription& scene, int32_t container, const Plugin& plugin);

/// The value in the form that reading gives: Radio as the choice's text, Float as double.
ParameterValue as_read(const ParameterInfo& parameter, const ParameterValue& value);

/// The value of a number parameter; a Bool counts as 0 or 1.
double number_of(const ParameterValue& value);

/// "Cube" of a Radio, "true" or "false" of a Bool, the text of a text parameter; empty for a number.
std::string text_of(const ParameterValue& value);

}  // namespace stage
