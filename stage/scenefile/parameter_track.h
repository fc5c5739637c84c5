// Tracks of parameters: values interpolated between keys.
#pragma once

#include "plugin_notes.h"
#include "scene_description.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Adds a line to `errors` for each key of a parameter's track to which the key before cannot be interpolated. Only
/// numbers and curves with equal numbers of points can be interpolated. A key with Ease::kStep can have any value. All
/// values must have passed check_settings.
void check_blends(const Track& track, const Plugin& plugin, const PluginNotes& notes, std::vector<std::string>& errors);

/// The value of a track of `parameter` at a time: constant before the first key and after the last, eased in between.
/// Values of an Int are rounded to nearest. Positions and numbers of a curve are interpolated one by one and written
/// with six digits. The track must have passed check_blends.
STAGE_EXPORT ParameterValue parameter_value(const Track& track, const ParameterInfo& parameter, double seconds);

}  // namespace stage
