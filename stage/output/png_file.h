// Pictures into PNG files.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Keyword (1…79 Latin-1 characters) and text of a PNG file's text entries.
using PngTexts = std::vector<std::pair<std::string, std::string>>;

/// Writes a picture with straight alpha. The same picture and texts give the same bytes. The file appears under its
/// name only when it is whole; on failure whatever stood there is untouched. The folder must exist.
STAGE_EXPORT Result<Done> write_png(const std::filesystem::path& path, const Picture& picture,
                                    const PngTexts& texts = {});

/// The text entries of a PNG file, in the file's order.
STAGE_EXPORT Result<PngTexts> read_png_texts(const std::filesystem::path& path);

}  // namespace stage
