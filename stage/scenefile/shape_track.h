// The shapes of a scene's containers through its timeline.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "scene_description.h"
#include "stage/scene/mesh.h"
#include "stage/scene/stage.h"
#include "stage/stage_export.h"
#include "timeline.h"

namespace stage {

struct ShapeKey {
    double time = 0.0;             // seconds from the first picture
    Ease ease = Ease::kStep;       // of the way from the key before to this one
    std::vector<Mesh> meshes;      // container units; none where there is nothing yet
    std::optional<Triple> fill{};  // none draws nothing
};

/// What one container carries, and when. A shape that never changes is a single key.
struct ShapeTrack {
    int32_t container = -1;          // index in the description
    std::vector<ShapeKey> keys;      // one or more, by time; what is not reached by a step agrees in all its counts
    std::optional<KeyMoment> shown;  // what the container has been given; none at first
};

/// The shapes of every container that has one at some time, all of them built: from its geometry and [[at]] entries, or
/// from its track. Adds an error for each shape that cannot be built, and for each that should deform into one with
/// other numbers of outlines or corners.
std::vector<ShapeTrack> build_shape_tracks(const SceneDescription& scene, Messages& messages);

/// Gives the container the meshes of a time; does nothing when it has them already. Between two keys every corner goes
/// straight from its place in the one to its place in the other.
void show_shape(Stage& stage, int32_t container_handle, ShapeTrack& track, double seconds);

/// The colour of what show_shape gave last, or none: between two keys with a fill in between the two colours, else that
/// of the last key that counts.
STAGE_EXPORT std::optional<Triple> shown_fill(const ShapeTrack& track);

}  // namespace stage
