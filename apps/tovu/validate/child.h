// Runs code that may crash, hang or end its process in a process of its own.
#pragma once

#include <functional>
#include <string>

#include "findings.h"

namespace tovu::validate {

struct ChildEnd {
    bool is_done = false;        // the work returned
    bool took_too_long = false;  // the process was ended
    std::string words;           // of the end where the work did not return: "ended the process with exit(3)"
    std::string output;          // the last line that the process wrote to standard output or standard error
};

/// Runs `work` in a copy of this process. Crashes, exceptions, exit() and the end of the time are noted in `outcome`,
/// with the stack of the plug-in's code. seconds: time allowed to one call of an entry point, and a thirtieth of what all
/// of the work may take; a busy machine does not end a check that goes on.
/// leave_by_exit: a process whose work is done ends as a host does, with exit(), instead of at once.
ChildEnd run_in_child(SharedOutcome& outcome, double seconds, const std::function<void()>& work,
                      bool leave_by_exit = false);

/// Runs `work` in a copy of this process, which notes into the same outcome, and waits as long as it takes: for work
/// inside of run_in_child. False: it did not return; the outcome says why, and this process should end, too.
bool run_in_grandchild(const std::function<void()>& work);

/// Notes where the library lies in this process, for stacks.
void note_library(SharedOutcome& outcome, const void* address_in_library);

}  // namespace tovu::validate
