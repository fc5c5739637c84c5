#include "unfinished.h"

#include <limits.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
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
std::atomic<bool> the_writer_runs;
std::atomic<bool> the_writer_stopped;
pthread_t the_writer;

int stop_signal() {
    return SIGRTMIN;
}

void on_stop(int) {
    the_writer_stopped = true;
    while (true) pause();
}

// A writer that waits for a slow disk stops late, so the waiting time is limited to a second.
void stop_writer() {
    if (!the_writer_runs || pthread_equal(the_writer, pthread_self())) return;
    if (pthread_kill(the_writer, stop_signal()) != 0) return;
    const timespec millisecond{0, 1'000'000};
    for (int i = 0; i < 1000 && !the_writer_stopped; ++i) nanosleep(&millisecond, nullptr);
}

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

void note_writer_thread() noexcept {
    struct sigaction action {};
    action.sa_handler = on_stop;
    sigfillset(&action.sa_mask);
    sigaction(stop_signal(), &action, nullptr);
    the_writer = pthread_self();
    the_writer_runs = true;
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, stop_signal());
    pthread_sigmask(SIG_UNBLOCK, &stop, nullptr);
}

void forget_writer_thread() noexcept {
    the_writer_runs = false;
}

void discard_unfinished() noexcept {
    stop_writer();                                            // first, since it could create files
    for (const std::atomic<pid_t>& command : the_commands) {  // before the files, since a command could create them
        if (command == 0) continue;
        kill(command, SIGKILL);
        waitpid(command, nullptr, 0);
    }
    for (const UnfinishedFile& file : the_files)
        if (file.noted) unlink(file.name);
}

}  // namespace stage
