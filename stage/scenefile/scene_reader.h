// Scene files: TOML, read whole into a SceneDescription or refused with every mistake named.
#pragma once

#include "scene_description.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Reads a scene file. The error has one line for each mistake: "file:line:column: what is wrong, what would be right".
/// Files that it names must exist; names and ranges of parameters are checked when the scene is built. Looks are found
/// in the folder looks/ beside the scene file, then among those that come along.
STAGE_EXPORT Result<SceneDescription> load_scene_file(const std::filesystem::path& file);

/// The same from text; `file` is for messages, and its folder is where relative paths start.
STAGE_EXPORT Result<SceneDescription> read_scene(const std::string& text, const std::filesystem::path& file);

/// Every key that a scene file may have, dotted: "size", "camera.position", "container.geometry.kind", …
STAGE_EXPORT std::vector<std::string> scene_keys();

}  // namespace stage
