// Runs code in a child process, since it may crash, hang or end its process.
#pragma once

#include <functional>
#include <string>

#include "findings.h"

namespace tovu::validate {

struct ChildEnd {
    bool is_done = false;        // the work returned
    bool took_too_long = false;  // the process was killed
    std::string words;           // how the process ended, if the work did not return: "exit() ended the process"
    std::string output;          // the last line that the process wrote to standard output or standard error
};

/// Runs `work` in a forked process. Crashes, exceptions, exit() and timeouts are recorded in `outcome`, with the stack
/// of the plug-in's code. seconds: time limit of one call of an entry point; the limit of the whole work is 30 times
/// that. leave_by_exit: after the work the process ends with exit(), as a host does, instead of _exit().
ChildEnd run_in_child(SharedOutcome& outcome, double seconds, const std::function<void()>& work,
                      bool leave_by_exit = false);

/// Runs `work` in a forked process that records into the same outcome, and waits for it without a time limit. Call it
/// inside run_in_child. False: the work did not return; the outcome says why, and this process should end too.
bool run_in_grandchild(const std::function<void()>& work);

/// Records the address range of the library in this process, which stacks are resolved with.
void note_library(SharedOutcome& outcome, const void* address_in_library);

}  // namespace tovu::validate
