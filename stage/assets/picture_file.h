// Pictures from files.
#pragma once

#include <array>
#include <filesystem>
#include <span>
#include <string>

#include "picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// The longest side that is read, in pixels.
inline constexpr int32_t kMaxPictureSide = 16384;

/// Reads a PNG, JPEG, TGA or BMP file as it is, without converting its channels: grey, grey with alpha, RGB or RGBA,
/// 8 bits each (16-bit files keep their upper 8). The error names the file and what is wrong with it: missing, not one
/// of these formats, damaged, ending too early, larger than kMaxPictureSide.
STAGE_EXPORT Result<Picture> read_picture(const std::filesystem::path& path);

/// Width and height of a picture file in pixels, from its head alone: damage further on goes unnoticed. Errors as
/// above.
STAGE_EXPORT Result<std::array<int32_t, 2>> read_picture_size(const std::filesystem::path& path);

/// The whole picture from bytes in memory; `name` stands for the file in messages.
STAGE_EXPORT Result<Picture> decode_picture(std::span<const uint8_t> bytes, const std::string& name);

}  // namespace stage
