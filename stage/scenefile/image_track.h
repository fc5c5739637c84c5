// The images of a scene through its timeline: sequences, and pictures that take the place of others.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/scene/stage.h"

namespace stage {

/// What one image shows, and when. Only the picture that is shown is in memory; each is decoded when its turn comes, a
/// looping one again in every round. A picture that stays is not decoded again.
struct ImageTrack {
    std::string name;
    ImageDescription description;
    std::vector<TimelineEntry> switches;  // those about this image, by time
    int32_t handle = kNoObject;           // once it has been shown
    int64_t shown = 0;                    // position of the picture shown: in the files, behind them in the switches
};

/// The scene's images. Looks at the sizes of all files: adds a line to `errors`, "file:line:column: …", for each that
/// is no picture, and for pictures of one sequence that differ in size.
std::vector<ImageTrack> make_image_tracks(const SceneDescription& scene, std::vector<std::string>& errors);

/// Gives the image the picture of a time; adds it to the Stage when it is not there yet. When another size or format
/// takes the place of the one before, the instances that have a parameter with the image's name are told that this
/// parameter changed, since plug-ins may have kept the size. The error names the place in the scene file.
Result<Done> show_image(Stage& stage, ImageTrack& track, double seconds);

}  // namespace stage
