#include "unfinished.h"

#include <limits.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

namespace stage {
namespace {

struct UnfinishedFile {
    std::atomic<bool> noted;  // set after the name is written: a signal handler may read it at any moment
    char name[PATH_MAX];
};

// Global, since a signal handler cannot receive them as arguments.
UnfinishedFile the_files[kMaxUnfinished];
std::atomic<pid_t> the_commands[kMaxUnfinished];  // 0: free

}  // namespace

void note_unfinished_file(const char* file) noexcept {
    const size_t bytes = std::strlen(file) + 1;
    if (bytes > PATH_MAX) return;
    for (UnfinishedFile& slot : the_files) {
        if (slot.noted) continue;
        std::memcpy(slot.name, file, bytes);
        slot.noted = true;
        return;
    }
}

void forget_unfinished_file(const char* file) noexcept {
    for (UnfinishedFile& slot : the_files)
        if (slot.noted && std::strcmp(slot.name, file) == 0) slot.noted = false;
}

void note_unfinished_command(pid_t pid) noexcept {
    for (std::atomic<pid_t>& slot : the_commands) {
        if (slot != 0) continue;
        slot = pid;
        return;
    }
}

void forget_unfinished_command(pid_t pid) noexcept {
    for (std::atomic<pid_t>& slot : the_commands)
        if (slot == pid) slot = 0;
}

void discard_unfinished() noexcept {
    for (const std::atomic<pid_t>& command : the_commands) {  // first: a command may still create its file
        if (command == 0) continue;
        kill(command, SIGKILL);
        waitpid(command, nullptr, 0);
    }
    for (const UnfinishedFile& file : the_files)
        if (file.noted) unlink(file.name);
}

}  // namespace stage
