// Names of numbered frames.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// True for a name with a % in it: it stands for numbered files.
STAGE_EXPORT bool is_frame_pattern(const std::string& name);

/// "frames/%04d.png" and 7 give "frames/0007.png". The pattern holds exactly one %d, %Nd or %0Nd (N 1…9); %% stands
/// for a percent sign; anything else is an error that says so. A number below 0 is an error.
STAGE_EXPORT Result<std::filesystem::path> frame_name(const std::string& pattern, int number);

/// Files by the number in their name.
using NumberedFiles = std::map<int, std::filesystem::path>;

/// The files that exist of a pattern such as "frames/%04d.png", whose number must be in the file's name; none in a
/// folder that does not exist. Error: a pattern as frame_name refuses.
STAGE_EXPORT Result<NumberedFiles> existing_frames(const std::string& pattern);

/// The files in `folder` that a pattern such as "wipe%04d.png" stands for, in the order of their numbers, from the
/// lowest there is. Errors: no such file; a number left out in between, whose file is named; a pattern as frame_name
/// refuses.
STAGE_EXPORT Result<std::vector<std::filesystem::path>> numbered_files(const std::filesystem::path& folder,
                                                                       const std::string& pattern);

}  // namespace stage
