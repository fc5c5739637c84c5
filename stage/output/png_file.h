// Writes PNG files.
#pragma once

#include <filesystem>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Writes a picture with straight alpha. The same picture gives the same bytes. The file gets its name only when it is
/// complete; on failure an older file of that name stays unchanged. The folder must exist.
STAGE_EXPORT Result<Done> write_png(const std::filesystem::path& path, const Picture& picture);

}  // namespace stage
