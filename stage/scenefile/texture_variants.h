// Splits containers with several textures into one container for each texture.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "plugin_notes.h"
#include "scene_description.h"

namespace stage {

/// Replaces each container with several textures by one for each texture, named "smoke", "smoke/2", "smoke/3"…, so that
/// each has a separate random stream. Divides the birth rate and the number of particles evenly, as the plug-in's notes
/// name them; a remainder of particles or of a burst goes to the first containers. Everything else is copied, timeline
/// and tracks included. plugins: by container index, -1 for none; extended in the same way. All settings must have
/// passed check_settings. Adds a line to `errors` for each such container without a plug-in or without these notes, and
/// for names that exist already. Does nothing after errors.
void expand_texture_variants(SceneDescription& scene, std::vector<PluginId>& plugins,
                             const std::map<PluginId, PluginNotes>& notes, std::vector<std::string>& errors);

}  // namespace stage
