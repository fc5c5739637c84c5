// Checks parameter values of a scene against the plug-in's registration.
#pragma once

#include "scene_description.h"
#include "stage/plugins/parameters.h"

namespace stage {

/// Adds a line to `errors` for each setting of an unknown parameter, of a wrong kind or out of range, or that names a
/// container or image that is not in the scene.
void check_settings(const SceneDescription& scene, const Plugin& plugin, const std::vector<ParameterSetting>& settings,
                    std::vector<std::string>& errors);

/// Adds a line to `errors` if the plug-in has no push button of this name.
void check_button(const Plugin& plugin, const std::string& button, const Place& place,
                  std::vector<std::string>& errors);

/// True if `name` is an image of the scene or a built-in image.
bool is_image_name(const SceneDescription& scene, const std::string& name);

/// The names that is_image_name accepts, those of the scene first.
std::vector<std::string> image_names(const SceneDescription& scene);

}  // namespace stage
