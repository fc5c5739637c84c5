// Reads and writes whole files. Output files get their name only when they are complete.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// The name of the file while it is written: a hidden file in the target's folder, different for each process.
STAGE_EXPORT std::filesystem::path partial_name(const std::filesystem::path& target);

/// Creates partial_name(target), empty, and returns its name. Until publish_partial or discard_partial is called, a
/// fault or a signal that ends the process also removes the file (stage/output/unfinished.h), and a lock on it tells
/// other processes that it is in use. Write to this file; do not replace it.
STAGE_EXPORT std::filesystem::path begin_partial(const std::filesystem::path& target);

/// Removes the partial files that killed processes left in a folder, for the targets whose names (without the folder)
/// `is_wanted` accepts. False if a running process, this one included, still writes to such a file.
STAGE_EXPORT bool remove_abandoned(const std::filesystem::path& folder,
                                   const std::function<bool(const std::string& name)>& is_wanted);

/// Renames partial_name(target) to target and replaces an older file.
STAGE_EXPORT Result<Done> publish_partial(const std::filesystem::path& target);

/// Removes partial_name(target) if it exists.
STAGE_EXPORT void discard_partial(const std::filesystem::path& target) noexcept;

/// Writes `bytes` as a file, through a partial file.
STAGE_EXPORT Result<Done> write_whole_file(const std::filesystem::path& target, std::string_view bytes);

/// The file's bytes; empty if it cannot be read.
STAGE_EXPORT std::string read_whole_file(const std::filesystem::path& file);

}  // namespace stage
