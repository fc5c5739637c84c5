// The images of a scene over time: sequences, and pictures that the timeline exchanges.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/scene/stage.h"

namespace stage {

/// One image over time. Only the current picture is in memory; each is decoded when it becomes current, those of a loop
/// again in every round.
struct ImageTrack {
    std::string name;
    ImageDescription description;
    std::vector<TimelineEntry> switches;  // timeline entries of this image, by time
    int32_t handle = kNoObject;           // once it has been shown
    int64_t shown = 0;                    // current picture: index into the files, then into the switches
};

/// The scene's images. Reads the sizes of all files and adds a line to `errors`, "file:line:column: …", for each that
/// is no picture, and for pictures of one sequence that differ in size.
std::vector<ImageTrack> make_image_tracks(const SceneDescription& scene, std::vector<std::string>& errors);

/// Sets the image's picture for a time; first adds the image to the Stage if needed. When size or format change, every
/// instance with a parameter that names the image is notified that this parameter changed, since plug-ins may have
/// stored the size. The error names the place in the scene file.
Result<Done> show_image(Stage& stage, ImageTrack& track, double seconds);

}  // namespace stage
