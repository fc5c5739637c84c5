// Converts the parameters of a scene to the frame rate at which it is rendered.
#pragma once

#include "plugin_notes.h"
#include "scene_description.h"
#include "stage/stage_export.h"

namespace stage {

/// Converts the container's parameters to the scene's `frame_rate`, in its settings, in the timeline and in tracks.
/// Values of a look are made for the look's rate, all others for `values_rate`. Appends settings for the results. The
/// notes say which parameters are converted. Adds a line to `warnings` for each result that is clamped to its range,
/// and for each value that cannot be converted. All settings must have passed check_settings.
STAGE_EXPORT void convert_container_rate(SceneDescription& scene, int32_t container, const Plugin& plugin,
                                         const PluginNotes& notes, std::vector<std::string>& warnings);

}  // namespace stage
