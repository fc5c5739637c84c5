// Writes JPEG files: small pictures for documents.
#pragma once

#include <filesystem>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Writes an RGB or RGBA picture without its alpha. quality: 1 to 100. The file gets its name only when it is complete.
/// The folder must exist.
STAGE_EXPORT Result<Done> write_jpeg(const std::filesystem::path& path, const Picture& picture, int quality);

}  // namespace stage
