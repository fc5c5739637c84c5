// The images that come along: sprites, flipbooks and wind maps.
#pragma once

#include <set>
#include <string>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// As looks/images.toml describes them; `looks` is beside the folder of the Stage's library. Read once. None if there
/// is no such file. Error: a line for each mistake in it.
STAGE_EXPORT const Result<ImageDescriptions>& built_in_images();

/// Every text that may name an image: textures, light maps, plates and text values of parameters, those of the timeline
/// too.
std::set<std::string> possible_image_names(const SceneDescription& scene);

/// The scene with the built-in images that it names among its images; it keeps its own of the same name. Error: as
/// built_in_images.
Result<SceneDescription> with_built_in_images(SceneDescription scene);

}  // namespace stage
