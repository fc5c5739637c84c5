// What a check sees of the plug-in: every call across the boundary, and every access to memory that is fenced off.
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

/// Fenced memory outside of instances that the plug-in is lent. An access beyond it, or to it once it is forbidden, is
/// a finding of `check`, as is freeing it.
struct FencedRegion {
    const stage::FencedMemory* memory;
    const char* check;
    std::string what;            // "the pixels of 'x'"
    std::string when_forbidden;  // " after the call that asked for them"
    std::string right;
};

/// One for each process that runs a check.
struct Watch {
    std::string check;                    // findings under other names are dropped
    std::vector<std::string> stands_for;  // but for these, which are then findings of `check`
    SharedOutcome* outcome = nullptr;
    const ElfFile* library = nullptr;  // the plug-in's
    stage::Stage* stage = nullptr;     // whose calls are watched
    std::vector<FencedRegion> regions;
    bool host_is_wrong = false;  // on purpose: what is asked about its wrong answers is no fault
    std::string during;          // what the host does meanwhile: "while the host has no images"; part of each finding

    // Called at the start and the end of every entry point, nested ones too.
    std::vector<std::function<void(const stage::RunningCall&)>> on_entry;
    std::vector<std::function<void(const stage::RunningCall&)>> on_return;
    std::vector<int> host_depths = {
        1};  // for each entry point that runs, how many services of it do; the host itself first
};

Watch& watch();

/// Starts watching the calls of this process for a check.
void begin_watch(const std::string& check, SharedOutcome& outcome, const ElfFile& library);

/// Watches this Stage: its complaints become findings.
void watch_stage(stage::Stage& stage);

/// A finding of `check`; dropped while another one runs. Where it was seen is the plug-in code that runs.
void found(std::string_view check, Weight weight, const std::string& message, const std::string& right);
void fail(std::string_view check, const std::string& message, const std::string& right);

/// From now on unset locals of the plug-in hold `word`. By default that is not a number as a float and as a double, and
/// far too large as an integer.
void poison_stack(uint32_t word = 0x7FFD7FFD);

/// Names plug-in code that is no entry point of an instance, while it lives: "PLUGIN_INIT", "the loading".
class RunningCode {
  public:
    explicit RunningCode(std::string_view words);
    ~RunningCode();
    RunningCode(const RunningCode&) = delete;
    RunningCode& operator=(const RunningCode&) = delete;

  private:
    std::string before_;
};

/// The address lies in fenced memory: notes what the plug-in did, and lets it go on. For the handler of SIGSEGV.
bool pass_fence(uintptr_t address, bool is_write);

/// The plug-in frees memory that it was lent: notes it. The memory stays.
bool frees_lent_memory(const void* memory);

/// How many bytes from this address on can be read, up to `bytes`.
size_t readable_bytes(const void* address, size_t bytes);

/// On the thread that runs the Stage.
bool on_host_thread();

/// The plug-in's own code runs on this thread: inside an entry point, not inside a service. Any other thread is the
/// plug-in's.
bool in_plugin_code();

}  // namespace tovu::validate
