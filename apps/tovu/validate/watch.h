// Watches the plug-in: every call between it and the host, and every access to fenced memory.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "findings.h"
#include "stage/plugins/instance.h"
#include "stage/scene/stage.h"

namespace tovu::validate {

struct ElfFile;

/// Fenced memory of the host that the plug-in may use for a time. An access outside its bounds or after that time, and
/// freeing it, are findings of `check`.
struct FencedRegion {
    const stage::FencedMemory* memory;
    const char* check;
    std::string what;            // "the pixels of 'x'"
    std::string when_forbidden;  // " after the call that asked for them"
    std::string right;
};

/// The state of the watch. One for each process that runs a check.
struct Watch {
    std::string check;                    // findings of other checks are dropped
    std::vector<std::string> stands_for;  // except findings of these, which are reported under `check`
    SharedOutcome* outcome = nullptr;
    const ElfFile* library = nullptr;  // of the plug-in
    stage::Stage* stage = nullptr;     // the watched Stage
    std::vector<FencedRegion> regions;
    bool host_is_wrong =
        false;           // the host gives wrong answers on purpose, so calls with wrong arguments are no findings
    std::string during;  // what the host does, added to each finding: "while the host has no images"

    // Called at the start and the end of every entry point, nested ones too.
    std::vector<std::function<void(const stage::RunningCall&)>> on_entry;
    std::vector<std::function<void(const stage::RunningCall&)>> on_return;
    // Number of nested services that run, for each running entry point. The first element stands for the host's code.
    std::vector<int> host_depths = {1};
};

Watch& watch();

/// Starts watching the calls of this process for a check.
void begin_watch(const std::string& check, SharedOutcome& outcome, const ElfFile& library);

/// Watches this Stage: its complaints become findings.
void watch_stage(stage::Stage& stage);

/// Adds a finding of `check`, or drops it if another check runs. The place of the finding is the running plug-in code.
void found(std::string_view check, Weight weight, const std::string& message, const std::string& right);
void fail(std::string_view check, const std::string& message, const std::string& right);

/// Fills the unset locals of the plug-in with `word` from now on. The default is NaN as a float and as a double, and a
/// very large integer.
void poison_stack(uint32_t word = 0x7FFD7FFD);

/// Names the running plug-in code while the object exists, for code outside of the entry points of an instance:
/// "PLUGIN_INIT", "the loading".
class RunningCode {
  public:
    explicit RunningCode(std::string_view words);
    ~RunningCode();
    RunningCode(const RunningCode&) = delete;
    RunningCode& operator=(const RunningCode&) = delete;

  private:
    std::string before_;
};

/// For the handler of SIGSEGV. If the address lies in fenced memory, reports the access, allows it and returns true.
bool pass_fence(uintptr_t address, bool is_write);

/// True if the plug-in frees memory of a FencedRegion, which is reported. The memory must not be freed then.
bool frees_lent_memory(const void* memory);

/// Number of readable bytes from this address on, at most `bytes`.
size_t readable_bytes(const void* address, size_t bytes);

/// True on the thread that runs the Stage.
bool on_host_thread();

/// True if this thread runs code of the plug-in: inside an entry point and not inside a service, or on any thread other
/// than the host's.
bool in_plugin_code();

}  // namespace tovu::validate
