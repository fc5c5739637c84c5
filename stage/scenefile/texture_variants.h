// Containers with several textures: one container for each.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "plugin_notes.h"
#include "scene_description.h"

namespace stage {

/// Replaces each container of several textures by one for each, named "smoke", "smoke/2", "smoke/3"…, so that each has
/// random numbers of its own. They share out the rate and the number of particles that the plug-in's notes name,
/// evenly, a remainder of particles and of a burst to the first ones; all else is the same, timeline and tracks
/// included. plugins: by container index, -1 for none; extended likewise. All settings must be right. Adds a line to
/// `errors` for each container that carries no plug-in, or one without such notes, and for names that are taken. Does
/// nothing after errors.
void expand_texture_variants(SceneDescription& scene, std::vector<PluginId>& plugins,
                             const std::map<PluginId, PluginNotes>& notes, std::vector<std::string>& errors);

}  // namespace stage
