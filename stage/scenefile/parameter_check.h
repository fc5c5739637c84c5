// Checks parameter values of a scene against the plug-in's registration.
#pragma once

#include "scene_description.h"
#include "stage/plugins/parameters.h"

namespace stage {

/// Adds a line to `errors` for each setting that the plug-in has no parameter for, whose kind or range is wrong, or
/// that names a container or image that the scene does not have.
void check_settings(const SceneDescription& scene, const Plugin& plugin, const std::vector<ParameterSetting>& settings,
                    std::vector<std::string>& errors);

/// Adds a line to `errors` when the plug-in has no push button of this name.
void check_button(const Plugin& plugin, const std::string& button, const Place& place,
                  std::vector<std::string>& errors);

/// Whether `name` is one of the scene's images or a built-in one.
bool is_image_name(const SceneDescription& scene, const std::string& name);

/// The names that is_image_name accepts: the scene's own first.
std::vector<std::string> image_names(const SceneDescription& scene);

}  // namespace stage
