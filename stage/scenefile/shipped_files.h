// The folder of the files that ship with the Stage.
#pragma once

#include <filesystem>

#include "stage/stage_export.h"

namespace stage {

/// The parent of the folder with the Stage's library, in the build tree and in an installation. Contains looks/ (looks
/// and built-in images), scenes/ and plugins/. Does not check that the folder exists.
STAGE_EXPORT std::filesystem::path shipped_files_folder();

}  // namespace stage
