// Values that a plug-in accepts but that hardly mean what was intended.
#pragma once

#include <string>
#include <vector>

#include "plugin_notes.h"
#include "scene_description.h"

namespace stage {

/// Adds a line to `warnings`, "file:line:column: …", for each value of the container's parameters, those of the
/// timeline too, that breaks the plug-in's notes: a curve of another form, a choice whose needed parameter is empty at
/// that time. container: index in the scene. All settings must have passed check_settings.
void warn_of_settings(const SceneDescription& scene, int32_t container, const Plugin& plugin, const PluginNotes& notes,
                      std::vector<std::string>& warnings);

}  // namespace stage
