// Reads picture files.
#pragma once

#include <array>
#include <filesystem>
#include <span>
#include <string>

#include "picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Reads a PNG, JPEG, TGA or BMP file. Keeps its channels: grey, grey with alpha, RGB or RGBA, 8 bits each (16-bit
/// files keep their upper 8). The error names the file and what is wrong with it: missing, another format, damaged,
/// truncated, larger than kMaxPictureSide.
STAGE_EXPORT Result<Picture> read_picture(const std::filesystem::path& path);

/// The same as RGBA with all 16 bits; 8 bits v become 257 v.
STAGE_EXPORT Result<DeepPicture> read_deep_picture(const std::filesystem::path& path);

/// Width and height of a picture file in pixels. Reads only the header, so that damaged pixel data is not detected.
/// Errors as for read_picture.
STAGE_EXPORT Result<std::array<int32_t, 2>> read_picture_size(const std::filesystem::path& path);

/// Decodes a picture file that is in memory; messages call it `name`.
STAGE_EXPORT Result<Picture> decode_picture(std::span<const uint8_t> bytes, const std::string& name);

}  // namespace stage
