// Names of numbered frames.
#pragma once

#include <filesystem>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Whether a name has a % in it and therefore stands for many files.
STAGE_EXPORT bool is_frame_pattern(const std::string& name);

/// "frames/%04d.png" and 7 give "frames/0007.png". The pattern holds exactly one %d, %Nd or %0Nd (N 1…9); %% stands
/// for a percent sign; anything else is an error that says so. A number below 0 is an error.
STAGE_EXPORT Result<std::filesystem::path> frame_name(const std::string& pattern, int number);

}  // namespace stage
