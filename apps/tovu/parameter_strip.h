// Strips of pictures that show what a parameter does: one scene, rendered once for each of several values.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "parameter_reference.h"
#include "stage/assets/picture.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

struct ParameterStrip {
    stage::ParameterNotes notes;                  // names the scene and the values
    std::vector<stage::SceneDescription> scenes;  // one for each value
    std::string purpose;                          // first line of the scene file, without its #
    uint64_t digest = 0;  // of everything that the pictures depend on, except the plug-in's code
};

/// The strips of all parameters that have a picture, in the order of the notes. scenes: the folder of the scenes that
/// the notes name. Values are set in the scene's first container with a plug-in. Errors: mistakes in the scene files.
stage::Result<std::vector<ParameterStrip>> parameter_strips(const NotedPlugin& noted,
                                                            const std::filesystem::path& scenes);

/// The last frame of each scene, side by side. plugin: the library of "smoke" in these scenes.
stage::Result<stage::Picture> draw_strip(const ParameterStrip& strip, const std::string& plugin);

}  // namespace tovu
