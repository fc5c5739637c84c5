// The files that a render writes, checked before anything is simulated.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "option_values.h"
#include "render_command.h"
#include "stage/output/video_file.h"

namespace tovu {

enum class OutputKind { kStill, kNumbered, kVideo, kSheet };

struct OutputPlan {
    OutputKind kind = OutputKind::kStill;
    std::string option;                     // "-o" or "--key"
    std::string name;                       // as given; the pattern of numbered pictures
    FrameRange frames;                      // the frames to write; one for a still
    int bits = 8;                           // per channel of pictures: 8 or 16
    std::array<int32_t, 2> cells = {1, 1};  // columns and rows of a sheet
    std::vector<int> sheet_frames;          // the frame of each cell, in reading order
    stage::VideoSettings video;             // for videos
};

/// The outputs of the options, each with its frames. Checks names, folders and ranges. --at gives the time of stills,
/// --frames the range of all other outputs.
stage::Result<std::vector<OutputPlan>> plan_outputs(const RenderOptions& options, const stage::SceneDescription& scene);

}  // namespace tovu
