// File names in the text of a scene or a look.
#pragma once

#include <filesystem>
#include <string>

namespace tovu {

/// Changes the relative file names in a text that moves from folder `from` to folder `to`, so that they name the same
/// files: pictures, meshes, fonts, looks, plug-in libraries. The name of a look in from/looks becomes a file name. Text
/// that is not TOML is returned unchanged.
std::string with_moved_files(const std::string& text, const std::filesystem::path& from,
                             const std::filesystem::path& to);

}  // namespace tovu
