// The shapes of a scene's containers over time.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "messages.h"
#include "scene_description.h"
#include "stage/scene/mesh.h"
#include "stage/scene/stage.h"
#include "stage/stage_export.h"
#include "timeline.h"

namespace stage {

struct ShapeKey {
    double time = 0.0;             // seconds from the first picture
    Ease ease = Ease::kStep;       // of the change from the previous key
    std::vector<Mesh> meshes;      // container units; none before the first shape
    std::optional<Triple> fill{};  // none draws nothing
    std::string image{};           // for a plate; empty for other kinds
};

/// The shape of one container over time. A shape that never changes is a single key.
struct ShapeTrack {
    int32_t container = -1;          // index in the description
    std::vector<ShapeKey> keys;      // one or more, by time; keys without kStep have the mesh sizes of the previous key
    std::optional<KeyMoment> shown;  // moment of the shown shape; none at first
};

/// Builds all shapes of the scene: from the geometry and [[at]] entries of a container, or from its track. Adds an
/// error for each shape that cannot be built, for each deformation between different numbers of outlines or corners,
/// and for each plate with an unknown image.
std::vector<ShapeTrack> build_shape_tracks(const SceneDescription& scene, Messages& messages);

/// Gives the container its meshes at a time, unless it has them already. Between two keys each corner is interpolated
/// linearly.
void show_shape(Stage& stage, int32_t container_handle, ShapeTrack& track, double seconds);

/// The fill of the current shape, or none. Interpolated between two keys with a fill.
STAGE_EXPORT std::optional<Triple> shown_fill(const ShapeTrack& track);

/// The image of the current plate; empty for other shapes. Between two keys it is that of the earlier key.
const std::string& shown_image(const ShapeTrack& track);

}  // namespace stage
