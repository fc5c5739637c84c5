// Writes OpenEXR files.
#pragma once

#include <filesystem>

#include "png_file.h"
#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Writes a frame as it was drawn: RGBA in half floats, with the colours multiplied by alpha, not clamped, ZIP
/// compressed. The numbers are those of the frame, which is blended in display values, not in linear light; the file
/// names the primaries of BT.709. The same frame gives the same bytes. The file gets its name only when it is complete;
/// on failure an older file of that name stays unchanged. The folder must exist.
STAGE_EXPORT Result<Done> write_exr(const std::filesystem::path& path, const DrawnPicture& picture,
                                    const PictureTexts& texts = {});

/// True for an OpenEXR file whose pixels can all be read.
bool is_whole_exr(const std::filesystem::path& path);

}  // namespace stage
