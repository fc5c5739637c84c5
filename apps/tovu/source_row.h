// Numbered pictures that a render takes its frames from, in place of a simulation.
#pragma once

#include <string>
#include <vector>

#include "render_plan.h"
#include "stage/output/picture_row.h"

namespace tovu {

/// Checks that every frame of the plan is there, whole, with 16 bits, and made of the same scene with the same options,
/// and locks the pictures against renders. The error names what differs, or the frames that are missing.
stage::Result<stage::PictureRow> take_source_row(const RenderPlan& plan, const RenderOptions& options);

/// The frames from `first` to `last` whose pictures are missing, not whole, or made of something else than the
/// manifest says. Error: the manifest cannot be read.
stage::Result<std::vector<int>> missing_frames(const std::string& pattern, int first, int last);

/// "3,10-19" for ascending numbers.
std::string ranges_text(const std::vector<int>& numbers);

}  // namespace tovu
