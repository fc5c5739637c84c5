// The images of a scene over time: sequences, and pictures that the timeline replaces.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/scene/stage.h"

namespace stage {

/// One image over time. Only the current picture is in memory. Each picture is decoded when it becomes current, also
/// repeatedly in a loop.
struct ImageTrack {
    std::string name;
    ImageDescription description;
    std::vector<TimelineEntry> switches;  // timeline entries of this image, by time
    int32_t handle = kNoObject;           // valid after the first show_image
    int64_t shown = 0;                    // current picture: index into the files, then into the switches
};

/// The scene's images. Reads the sizes of all files. Adds a line "file:line:column: …" to `errors` for each file that
/// is not a picture, and for sequences whose pictures differ in size.
std::vector<ImageTrack> make_image_tracks(const SceneDescription& scene, std::vector<std::string>& errors);

/// Sets the image's picture for a time. Adds the image to the Stage at the first call. If size or format changes,
/// notifies every instance with a parameter that names the image of a change of this parameter, since plug-ins may have
/// stored the size. The error names the place in the scene file.
Result<Done> show_image(Stage& stage, ImageTrack& track, double seconds);

}  // namespace stage
