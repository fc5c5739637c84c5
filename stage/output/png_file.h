// Writes PNG files.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Metadata of a picture file: keywords of at most 79 letters and digits, each with a text in UTF-8.
using PictureTexts = std::vector<std::pair<std::string, std::string>>;

/// Writes a picture with straight alpha. The same picture gives the same bytes. The file gets its name only when it is
/// complete; on failure an older file of that name stays unchanged. The folder must exist.
STAGE_EXPORT Result<Done> write_png(const std::filesystem::path& path, const Picture& picture,
                                    const PictureTexts& texts = {});

/// Writes a picture with 16 bits per channel; otherwise as above.
STAGE_EXPORT Result<Done> write_png(const std::filesystem::path& path, const DeepPicture& picture,
                                    const PictureTexts& texts = {});

}  // namespace stage
