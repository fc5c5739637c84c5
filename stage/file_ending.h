// Endings of file names.
#pragma once

#include <filesystem>
#include <string>

#include "stage/stage_export.h"

namespace stage {

/// The ending in lower case, with its dot: ".png" for "frames/A.PNG"; empty if there is none.
STAGE_EXPORT std::string file_ending(const std::filesystem::path& file);

}  // namespace stage
