// The built-in images: sprites, flipbooks and wind maps.
#pragma once

#include <set>
#include <string>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// The images of looks/images.toml in shipped_files_folder(). Read once. Empty if the file does not exist. Error: a
/// line for each mistake in the file.
STAGE_EXPORT const Result<ImageDescriptions>& built_in_images();

/// Every text that may name an image: textures, light maps, plates and text values of parameters, also those of the
/// timeline.
std::set<std::string> possible_image_names(const SceneDescription& scene);

/// Adds the built-in images that the scene names to its images. Images of the scene take precedence. Errors as for
/// built_in_images.
Result<SceneDescription> with_built_in_images(SceneDescription scene);

}  // namespace stage
