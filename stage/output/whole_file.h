// Files that appear under their name only once they are whole.
#pragma once

#include <filesystem>
#include <string_view>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// The name to write to until the file is whole: beside the target, hidden, and another for each process.
STAGE_EXPORT std::filesystem::path partial_name(const std::filesystem::path& target);

/// Call before the file is created: returns partial_name(target), which is removed, too, when the process is ended by
/// a fault or a signal (stage/output/unfinished.h) until publish_partial or discard_partial is called.
STAGE_EXPORT std::filesystem::path begin_partial(const std::filesystem::path& target);

/// Renames partial_name(target) to target, over an older one.
STAGE_EXPORT Result<Done> publish_partial(const std::filesystem::path& target);

/// Removes partial_name(target) if it is there.
STAGE_EXPORT void discard_partial(const std::filesystem::path& target) noexcept;

/// Writes a file that is in memory.
STAGE_EXPORT Result<Done> write_whole_file(const std::filesystem::path& target, std::string_view bytes);

}  // namespace stage
