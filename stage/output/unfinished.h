// Records incomplete output files and the commands that write them, so that both can be removed when a fault or a
// signal ends the process.
#pragma once

#include <sys/types.h>

#include "stage/stage_export.h"

namespace stage {

/// At most this many files and this many commands are recorded at a time; further ones are ignored.
constexpr int kMaxUnfinished = 64;

/// Call `note` before the file is created and `forget` after it is renamed or removed. Names of PATH_MAX bytes or more
/// are ignored, since no file can have such a name.
void note_unfinished_file(const char* file) noexcept;
void forget_unfinished_file(const char* file) noexcept;

/// Call `note` right after the child process has started and `forget` just before it is reaped.
void note_unfinished_command(pid_t pid) noexcept;
void forget_unfinished_command(pid_t pid) noexcept;

/// Registers a thread that creates and renames files, so that discard_unfinished can stop it. Call `note` at the start
/// of the thread and `forget` at its end, both on that thread. At most one thread at a time.
void note_writer_thread() noexcept;
void forget_writer_thread() noexcept;

/// Stops the writer thread for good, kills and reaps the commands, then removes the files. Call only to end the
/// process. Async-signal-safe.
STAGE_EXPORT void discard_unfinished() noexcept;

}  // namespace stage
