// What a check finds, kept in memory that the checking process shares with the one that started it: a crash loses
// nothing of it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tovu::validate {

enum class Weight : uint8_t { kNote, kWarning, kFailure };

/// One finding. Texts are NUL-terminated and cut off where they do not fit.
struct Finding {
    Weight weight;
    int64_t times;      // findings that differ only in numbers are kept once
    char where[160];    // "PLUGIN_NEW_GEOM, frame 3"; empty where no call is meant
    char message[600];  // what was seen
    char right[300];    // what would be right
};

/// How a process that ran a check ended, as far as it could tell itself.
enum class Ending : uint8_t { kNone, kDone, kCrash, kTimeout, kExit };

struct SharedOutcome {
    static constexpr int kMostFindings = 16;
    static constexpr int kMostFrames = 32;

    int finding_count;
    int64_t dropped;  // findings beyond kMostFindings
    Finding findings[kMostFindings];
    char skip_reason[200];  // empty: the check applies

    char running[160];  // the plug-in code that runs, as in Finding::where; empty outside of it
    uint64_t progress;  // goes up with every call of an entry point that begins or ends
    Ending ending;
    char ending_words[400];  // "SIGSEGV at address 0x0"
    int frame_count;         // of the stack, innermost first
    uintptr_t frames[kMostFrames];
    uintptr_t library_start;  // where the plug-in's library lies in that process
    uintptr_t library_end;
};

/// Memory that processes made from this one share. Zeroed; never freed.
SharedOutcome* make_shared_outcome();

/// Adds a finding, or counts it again.
void add_finding(SharedOutcome& outcome, Weight weight, std::string_view where, std::string_view message,
                 std::string_view right);

/// Copies as much of `text` as fits, with a NUL. Async-signal-safe.
void copy_text(char* target, size_t bytes, std::string_view text);

}  // namespace tovu::validate
