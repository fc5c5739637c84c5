// The findings of a check, in memory that the checking process shares with its parent, so that they survive a crash.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tovu::validate {

enum class Weight : uint8_t { kNote, kWarning, kFailure };

/// One finding. Texts are NUL-terminated and truncated if they are too long.
struct Finding {
    Weight weight;
    int64_t times;      // occurrences; findings that differ only in numbers are stored once
    char where[160];    // "PLUGIN_NEW_GEOM, frame 3"; empty outside of calls
    char message[600];  // the fault
    char right[300];    // the correct behaviour
};

/// How the process of a check ended, as recorded by that process.
enum class Ending : uint8_t { kNone, kDone, kCrash, kTimeout, kExit };

struct SharedOutcome {
    static constexpr int kMostFindings = 16;
    static constexpr int kMostFrames = 32;

    int finding_count;
    int64_t dropped;  // findings beyond kMostFindings
    Finding findings[kMostFindings];
    char skip_reason[200];  // empty: the check applies

    char running[160];  // the running plug-in code, as in Finding::where; empty outside of it
    uint64_t progress;  // incremented when a call of an entry point begins or ends
    Ending ending;
    char ending_words[400];  // "SIGSEGV at address 0x0"
    int frame_count;         // number of `frames`: return addresses of the stack, innermost first
    uintptr_t frames[kMostFrames];
    uintptr_t library_start;  // address range of the plug-in's library in that process
    uintptr_t library_end;
};

/// Zeroed memory that is shared with forked processes. Never freed.
SharedOutcome* make_shared_outcome();

/// Adds a finding, or counts another occurrence of it.
void add_finding(SharedOutcome& outcome, Weight weight, std::string_view where, std::string_view message,
                 std::string_view right);

/// Copies `text`, truncated to fit, with a NUL. Async-signal-safe.
void copy_text(char* target, size_t bytes, std::string_view text);

}  // namespace tovu::validate
