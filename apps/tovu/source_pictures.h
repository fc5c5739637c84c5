// Numbered pictures that a video is made from, instead of a simulation.
#pragma once

#include <string>
#include <vector>

#include "render_plan.h"
#include "stage/output/picture_sequence.h"

namespace tovu {

/// Checks that every frame of the plan exists as a complete 16-bit picture, made from the same scene with the same
/// options, and locks the pictures against renders. The error names the differences or the missing frames.
stage::Result<stage::PictureSequence> lock_source_pictures(const RenderPlan& plan, const RenderOptions& options);

/// The frames of the range whose pictures are missing or incomplete, or are not listed in the manifest. Error: the
/// manifest cannot be read.
stage::Result<std::vector<int>> missing_frames(const std::string& pattern, const FrameRange& range);

/// "3,10-19" for ascending numbers.
std::string ranges_text(const std::vector<int>& numbers);

}  // namespace tovu
