// File names of numbered frames.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// True if the name contains a % and therefore is a pattern of numbered files.
STAGE_EXPORT bool is_frame_pattern(const std::string& name);

/// "frames/%04d.png" and 7 give "frames/0007.png". The pattern must contain exactly one %d, %Nd or %0Nd (N 1…9); %%
/// stands for a percent sign. Errors: any other pattern; a number below 0.
STAGE_EXPORT Result<std::filesystem::path> frame_name(const std::string& pattern, int number);

/// The frame number in `file_name`, a name without folders; -1 if it does not match the pattern.
STAGE_EXPORT int frame_number(const std::string& pattern, const std::string& file_name);

/// Replaces the number by a word: "frames/row.png" for "frames/%04d.png" and "row". Errors: a pattern that frame_name
/// rejects; the number is in the folder's name.
STAGE_EXPORT Result<std::filesystem::path> name_with_word(const std::string& pattern, const std::string& word);

/// Files by the number in their name.
using NumberedFiles = std::map<int, std::filesystem::path>;

/// The existing files that match a pattern such as "frames/%04d.png". None if the folder does not exist, or if the
/// number is in the folder's name. Error: a pattern that frame_name rejects.
STAGE_EXPORT Result<NumberedFiles> existing_frames(const std::string& pattern);

/// The files in `folder` that match a pattern such as "wipe%04d.png", by ascending number from the lowest. Errors: no
/// file matches; a number between the lowest and the highest is missing (the message names its file); a pattern that
/// frame_name rejects.
STAGE_EXPORT Result<std::vector<std::filesystem::path>> numbered_files(const std::filesystem::path& folder,
                                                                       const std::string& pattern);

}  // namespace stage
