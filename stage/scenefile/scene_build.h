// Creates a Stage from a scene's description.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "burst.h"
#include "image_track.h"
#include "plugin_notes.h"
#include "scene_description.h"
#include "shape_track.h"
#include "stage/result.h"
#include "stage/scene/stage.h"
#include "stage/stage_export.h"

namespace stage {

struct BuiltScene {
    SceneDescription description;  // its parameters are converted to its frame rate
    StagePtr stage;
    std::vector<int32_t> container_handles;  // by index of the description's containers
    std::vector<ImageTrack> images;
    std::vector<ShapeTrack> shapes;
    std::vector<BurstTarget> bursts;          // of the containers that have a burst in the timeline
    std::vector<std::string> warnings;        // "file:line:column: …": what can be rendered, but hardly as intended
    std::vector<PluginId> plugins{};          // by index of the description's containers; -1 where one carries none
    std::map<PluginId, PluginNotes> notes{};  // of each of these plug-ins
};

/// Creates a Stage at its first frame (a pre-warming one, if there are any): images, containers, shapes, plug-in
/// instances with their parameters, the camera. smoke_plugin: the library for "smoke" and for containers that name no
/// plug-in. The error has a line for each mistake, "file:line:column: …": wrong names and values of parameters (those
/// of the timeline too), textures, images, plug-ins and shapes.
STAGE_EXPORT Result<BuiltScene> build_scene(const SceneDescription& description, const std::string& smoke_plugin);

}  // namespace stage
