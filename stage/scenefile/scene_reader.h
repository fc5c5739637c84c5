// Reads scene files (TOML) into a SceneDescription. Reports every mistake of a file.
#pragma once

#include "scene_description.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Reads a scene file. The error has one line for each mistake: "file:line:column: what is wrong, what would be right".
/// Files that it names must exist. Names and ranges of parameters are checked when the scene is built. Looks are
/// searched in the folder looks/ beside the scene file, then among the installed ones.
STAGE_EXPORT Result<SceneDescription> load_scene_file(const std::filesystem::path& file);

/// Reads a scene from text. `file` appears in messages, and its folder is the base of relative paths.
STAGE_EXPORT Result<SceneDescription> read_scene(const std::string& text, const std::filesystem::path& file);

/// Every key that a scene file may have, dotted: "size", "camera.position", "container.geometry.kind", …
STAGE_EXPORT std::vector<std::string> scene_keys();

}  // namespace stage
