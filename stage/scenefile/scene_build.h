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
    std::vector<BurstTarget> bursts;          // for the containers with a burst in the timeline
    std::vector<std::string> warnings;        // "file:line:column: …" about values that are probably mistakes
    std::vector<PluginId> plugins{};          // by index of the description's containers; -1 without a plug-in
    std::map<PluginId, PluginNotes> notes{};  // of these plug-ins
};

/// Creates a Stage at its first frame (the first pre-warming frame, if there are any): images, containers, shapes,
/// plug-in instances with their parameters, the camera. smoke_plugin: the library for "smoke" and for containers that
/// name no plug-in. The error has a line "file:line:column: …" for each mistake: wrong names and values of parameters
/// (also in the timeline), textures, images, plug-ins and shapes.
STAGE_EXPORT Result<BuiltScene> build_scene(const SceneDescription& description, const std::string& smoke_plugin);

}  // namespace stage
