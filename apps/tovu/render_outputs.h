// The open outputs of a render: each takes the frames that it wants.
#pragma once

#include <optional>
#include <vector>

#include "output_plan.h"
#include "stage/assets/picture.h"
#include "stage/output/video_file.h"

namespace tovu {

/// An output that was not finished leaves no video; pictures that were complete stay. Move only.
struct Output {
    OutputPlan plan;
    std::optional<stage::VideoFile> video;
};

/// Starts the videos and makes the folders of numbered pictures.
stage::Result<std::vector<Output>> open_outputs(const std::vector<OutputPlan>& plans,
                                                const stage::SceneDescription& scene);

/// False for a frame that no output takes; it need not be drawn.
bool wants_frame(const std::vector<Output>& outputs, int frame);

/// Gives a drawn frame to the outputs that want it. Frames must come in ascending order.
stage::Result<stage::Done> write_frame(std::vector<Output>& outputs, int frame, const stage::Picture& picture);

/// After the last frame: completes the videos, which get their names now.
stage::Result<stage::Done> finish_outputs(std::vector<Output>& outputs);

}  // namespace tovu
