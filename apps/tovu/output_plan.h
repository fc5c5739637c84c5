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
    std::string name;                       // as given; of numbered pictures, their pattern
    FrameRange frames;                      // that it takes: one for a still
    int bits = 8;                           // per channel of pictures: 8 or 16
    std::array<int32_t, 2> cells = {1, 1};  // columns and rows of a sheet
    std::vector<int> sheet_frames;          // of its cells, in reading order
    stage::VideoSettings video;             // of videos
};

/// The outputs of the options, each with the frames that it takes. Checks names, folders and ranges.
/// --at is the moment of the stills, --frames the range of everything else.
stage::Result<std::vector<OutputPlan>> plan_outputs(const RenderOptions& options, const stage::SceneDescription& scene);

}  // namespace tovu
