// Warnings about values that a plug-in accepts but that are probably mistakes.
#pragma once

#include <string>
#include <vector>

#include "plugin_notes.h"
#include "scene_description.h"

namespace stage {

/// Adds a line "file:line:column: …" to `warnings` for each value of the container's parameters, also in the timeline,
/// that contradicts the plug-in's notes: a curve in a wrong format, a choice that needs another parameter, which is
/// empty at that time. container: index in the scene. All settings must have passed check_settings.
void warn_of_settings(const SceneDescription& scene, int32_t container, const Plugin& plugin, const PluginNotes& notes,
                      std::vector<std::string>& warnings);

}  // namespace stage
