// Where the files are that come along with the Stage.
#pragma once

#include <filesystem>

#include "stage/stage_export.h"

namespace stage {

/// The folder above that of the Stage's library, in the build tree and in an installed one. Its looks/ has looks and
/// built-in images, scenes/ scene files, plugins/ plug-ins. Does not check that it exists.
STAGE_EXPORT std::filesystem::path shipped_files_folder();

}  // namespace stage
