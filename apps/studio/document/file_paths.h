// Names of files in the text of a scene or a look.
#pragma once

#include <filesystem>
#include <string>

namespace tovu {

/// The text with its relative file names changed so that they name the same files from another folder: pictures,
/// meshes, fonts, looks, plug-in libraries. A look's name that stands for a file in from/looks becomes that file's
/// name. Text that is not TOML stays as it is.
std::string with_moved_files(const std::string& text, const std::filesystem::path& from,
                             const std::filesystem::path& to);

}  // namespace tovu
