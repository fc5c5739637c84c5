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
    Ease ease = Ease::kStep;       // of the change from the key before
    std::vector<Mesh> meshes;      // container units; none before the first shape
    std::optional<Triple> fill{};  // none draws nothing
    std::string image{};           // of a plate; empty for other kinds
};

/// The shape of one container over time. A shape that never changes is a single key.
struct ShapeTrack {
    int32_t container = -1;          // index in the description
    std::vector<ShapeKey> keys;      // one or more, by time; keys that are not steps have the counts of the key before
    std::optional<KeyMoment> shown;  // the moment that the container shows; none at first
};

/// The shapes of every container that has one at some time, all of them built: from its geometry and [[at]] entries, or
/// from its track. Adds an error for each shape that cannot be built, for each that should deform into one with
/// other numbers of outlines or corners, and for each plate with an unknown image.
std::vector<ShapeTrack> build_shape_tracks(const SceneDescription& scene, Messages& messages);

/// Gives the container the meshes of a time, unless it has them already. Between two keys each corner moves in a
/// straight line.
void show_shape(Stage& stage, int32_t container_handle, ShapeTrack& track, double seconds);

/// The fill of the shape that show_shape gave last, or none.
/// Between two keys with a fill it is interpolated.
STAGE_EXPORT std::optional<Triple> shown_fill(const ShapeTrack& track);

/// The image of the plate that show_shape gave last; empty where the shape is no plate. Between two keys: of the first.
const std::string& shown_image(const ShapeTrack& track);

}  // namespace stage
