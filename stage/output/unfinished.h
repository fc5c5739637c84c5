// Files that are not whole yet and the commands that write them, so that a process that ends at once leaves neither.
#pragma once

#include <sys/types.h>

#include "stage/stage_export.h"

namespace stage {

/// Up to this many files, and as many commands, are kept track of at a time; more are not noted.
constexpr int kMaxUnfinished = 8;

/// Notes a file from before it is created until it is renamed or removed. A name longer than PATH_MAX is not noted: no
/// file can have it.
void note_unfinished_file(const char* file) noexcept;
void forget_unfinished_file(const char* file) noexcept;

/// Notes a child process from its start until just before it is reaped.
void note_unfinished_command(pid_t pid) noexcept;
void forget_unfinished_command(pid_t pid) noexcept;

/// Kills and reaps the commands, then removes the files. For the end of the process only. Async-signal-safe.
STAGE_EXPORT void discard_unfinished() noexcept;

}  // namespace stage
