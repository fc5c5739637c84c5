// The values of a scene's smoke at the frame rate that it is rendered at.
#pragma once

#include "plugin_notes.h"
#include "scene_description.h"
#include "stage/stage_export.h"

namespace stage {

/// Converts what the container's parameters, in its own settings, in the timeline and in tracks, were made at: values
/// of a look at the look's rate, all others at `values_rate`, to `frame_rate`. Settings for the results are added
/// behind the others. The notes say which parameters convert. Adds a line to `warnings` for each value that is held at
/// the limit of its range, and for each that cannot be converted. All settings must have passed check_settings.
STAGE_EXPORT void convert_container_rate(SceneDescription& scene, int32_t container, const Plugin& plugin,
                                         const PluginNotes& notes, std::vector<std::string>& warnings);

}  // namespace stage
