// The list of files that were opened or saved last.
#pragma once

#include <filesystem>
#include <vector>

#include "stage/result.h"

namespace tovu {

/// Puts a file at the front of the list in `folder`. Creates the folder if necessary. The list keeps 8 files. file:
/// absolute. Error: the list cannot be written.
stage::Result<stage::Done> remember_file(const std::filesystem::path& folder, const std::filesystem::path& file);

/// The files of the list that still exist, newest first.
std::vector<std::filesystem::path> recent_files(const std::filesystem::path& folder);

}  // namespace tovu
