// The files that were opened or saved last, in a file of the user's state.
#pragma once

#include <filesystem>
#include <vector>

#include "stage/result.h"

namespace tovu {

/// Puts a file in front of the list in `folder`, which is created; the list keeps the last 8. file: absolute.
/// Error: the list cannot be written.
stage::Result<stage::Done> remember_file(const std::filesystem::path& folder, const std::filesystem::path& file);

/// Those of the list that exist, newest first.
std::vector<std::filesystem::path> recent_files(const std::filesystem::path& folder);

}  // namespace tovu
