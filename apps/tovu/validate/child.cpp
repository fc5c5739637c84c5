#include "child.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <thread>

#include "watch.h"

namespace tovu::validate {
namespace {

constexpr int kEndedEarly = 99;
constexpr int kTimeoutSignal = SIGUSR2;

SharedOutcome* the_outcome = nullptr;  // global, since a signal handler cannot receive it as an argument
alignas(16) char the_handler_stack[1 << 18];

/// "SEGV". Async-signal-safe.
const char* signal_name(int number) {
    const char* name = sigabbrev_np(number);
    return name ? name : "?";
}

void note_stack() {
    void* frames[SharedOutcome::kMostFrames];
    const int count = backtrace(frames, SharedOutcome::kMostFrames);
    for (int i = 0; i < count; ++i) the_outcome->frames[i] = reinterpret_cast<uintptr_t>(frames[i]);
    the_outcome->frame_count = count;
}

[[noreturn]] void end_early(Ending ending, std::string_view words) {
    if (the_outcome->ending != Ending::kNone) _exit(kEndedEarly);
    the_outcome->ending = ending;
    copy_text(the_outcome->ending_words, sizeof the_outcome->ending_words, words);
    note_stack();
    _exit(kEndedEarly);
}

uintptr_t stack_pointer_of(const ucontext_t& context) {
#if defined(__x86_64__)
    return static_cast<uintptr_t>(context.uc_mcontext.gregs[REG_RSP]);
#elif defined(__i386__)
    return static_cast<uintptr_t>(context.uc_mcontext.gregs[REG_ESP]);
#else
    return static_cast<uintptr_t>(context.uc_mcontext.sp);
#endif
}

bool is_write(const ucontext_t& context) {
#if defined(__x86_64__) || defined(__i386__)
    return (context.uc_mcontext.gregs[REG_ERR] & 2) != 0;
#else
    return context.uc_mcontext.fault_address == 0;  // unknown here; reported as a read
#endif
}

void on_fault(int number, siginfo_t* info, void* context_pointer) {
    const auto& context = *static_cast<const ucontext_t*>(context_pointer);
    const auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    const bool has_address = (number == SIGSEGV || number == SIGBUS) && info->si_code > 0;
    if (has_address && pass_fence(address, is_write(context))) return;
    char words[160];
    const uintptr_t below_stack = stack_pointer_of(context) - address + 65536;
    if (number == SIGSEGV && has_address && below_stack < 131072)
        std::snprintf(words, sizeof words, "SIGSEGV: the stack overflowed");
    else if (has_address && info->si_code == SI_KERNEL)
        std::snprintf(words, sizeof words, "SIG%s at no valid address", signal_name(number));
    else if (has_address)
        std::snprintf(words, sizeof words, "SIG%s: %s address 0x%zx%s", signal_name(number),
                      is_write(context) ? "wrote to" : "read", address,
                      address < 4096                           ? " (a null pointer)"
                      : uint64_t{address} >> 31 == 0x1FFFFFFFF ? " (a slot's 32 bits, taken for a signed number)"
                                                               : "");
    else
        std::snprintf(words, sizeof words, "SIG%s", signal_name(number));
    end_early(Ending::kCrash, words);
}

void on_timeout(int) {
    end_early(Ending::kTimeout, "did not return in time");
}

[[noreturn]] void on_terminate() {
    if (!std::current_exception()) end_early(Ending::kCrash, "std::terminate was called");
    try {
        throw;
    } catch (const std::exception& thrown) {
        end_early(Ending::kCrash, fmt::format("a C++ exception: {}", thrown.what()));
    } catch (...) {
        end_early(Ending::kCrash, "a C++ exception");
    }
}

void on_exit_called() {
    if (the_outcome->ending == Ending::kNone) end_early(Ending::kExit, "exit() ended the process");
}

void handle_signals() {
    stack_t stack{};
    stack.ss_sp = the_handler_stack;
    stack.ss_size = sizeof the_handler_stack;
    sigaltstack(&stack, nullptr);
    void* warm_up[1];
    backtrace(warm_up, 1);  // the first call loads a library, which needs an intact heap
    for (const int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP}) {
        struct sigaction action {};
        action.sa_sigaction = on_fault;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        sigaction(number, &action, nullptr);
    }
    struct sigaction action {};
    action.sa_handler = on_timeout;
    action.sa_flags = SA_ONSTACK;
    sigaction(kTimeoutSignal, &action, nullptr);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGALRM}) signal(number, SIG_DFL);
    std::set_terminate(on_terminate);
    std::atexit(on_exit_called);
    at_quick_exit(on_exit_called);
}

// An exception here left an entry point of the plug-in.
void run_work(const std::function<void()>& work) {
    try {
        work();
    } catch (...) {
        on_terminate();
    }
}

[[noreturn]] void be_child(SharedOutcome& outcome, int output, const std::function<void()>& work, bool leave_by_exit) {
    setpgid(0, 0);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    if (const int nothing = open("/dev/null", O_RDONLY); nothing >= 0) dup2(nothing, STDIN_FILENO);
    the_outcome = &outcome;
    handle_signals();
    run_work(work);
    if (leave_by_exit) {
        copy_text(outcome.running, sizeof outcome.running, "the end of the process");
        outcome.ending = Ending::kDone;
        std::exit(0);
    }
    outcome.ending = Ending::kDone;
    _exit(0);
}

std::string last_line_of(int file) {
    char text[4096];
    const off_t end = lseek(file, 0, SEEK_END);
    const off_t start = std::max<off_t>(0, end - static_cast<off_t>(sizeof text));
    const ssize_t count = pread(file, text, sizeof text, start);
    std::string_view lines(text, count > 0 ? static_cast<size_t>(count) : 0);
    while (!lines.empty() && lines.back() == '\n') lines.remove_suffix(1);
    const size_t begin = lines.rfind('\n');
    return std::string(begin == std::string_view::npos ? lines : lines.substr(begin + 1));
}

/// Waits for the process. False if it makes no progress for `seconds`, or does not end within 30 times that.
bool wait_for(pid_t child, double seconds, const SharedOutcome& outcome, int& status) {
    using Clock = std::chrono::steady_clock;
    const auto allowed = std::chrono::duration<double>(seconds);
    const auto start = Clock::now();
    auto last_progress = start;
    uint64_t progress = 0;
    const auto* counter = static_cast<const volatile uint64_t*>(&outcome.progress);
    for (auto pause = std::chrono::microseconds(200);; pause = std::min(pause * 2, std::chrono::microseconds(10000))) {
        if (waitpid(child, &status, WNOHANG) == child) return true;
        const auto now = Clock::now();
        if (*counter != progress) last_progress = now;
        progress = *counter;
        if (now - last_progress > allowed || now - start > 30 * allowed) return false;
        std::this_thread::sleep_for(pause);
    }
}

std::string end_words(const SharedOutcome& outcome, int status) {
    if (outcome.ending == Ending::kCrash || outcome.ending == Ending::kTimeout || outcome.ending == Ending::kExit)
        return outcome.ending_words;
    if (WIFSIGNALED(status)) return fmt::format("SIG{}", signal_name(WTERMSIG(status)));
    return fmt::format("the process was ended with status {}", WEXITSTATUS(status));
}

int open_output() {
    const int file = memfd_create("output", MFD_CLOEXEC);
    if (file < 0) throw std::runtime_error("no file for the output of a check");
    return file;
}

}  // namespace

ChildEnd run_in_child(SharedOutcome& outcome, double seconds, const std::function<void()>& work, bool leave_by_exit) {
    const int output = open_output();
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error(fmt::format("no process for a check: {}", std::strerror(errno)));
    if (child == 0) be_child(outcome, output, work, leave_by_exit);
    setpgid(child, child);
    ChildEnd end;
    int status = 0;
    if (!wait_for(child, seconds, outcome, status)) {
        end.took_too_long = true;
        kill(-child, kTimeoutSignal);  // to the group, since the process may wait for a child of its own
        int ignored = 0;
        if (!wait_for(child, 1.0, outcome, status)) {
            kill(child, SIGKILL);
            waitpid(child, &ignored, 0);
        }
    }
    kill(-child, SIGKILL);  // processes that the child left running
    end.is_done =
        !end.took_too_long && outcome.ending == Ending::kDone && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (!end.is_done) end.words = end_words(outcome, status);
    end.output = last_line_of(output);
    close(output);
    return end;
}

bool run_in_grandchild(const std::function<void()>& work) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error(fmt::format("no process for a check: {}", std::strerror(errno)));
    if (child == 0) {
        run_work(work);
        _exit(0);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void note_library(SharedOutcome& outcome, const void* address_in_library) {
    dl_find_object found;
    if (_dl_find_object(const_cast<void*>(address_in_library), &found) != 0) return;
    outcome.library_start = reinterpret_cast<uintptr_t>(found.dlfo_map_start);
    outcome.library_end = reinterpret_cast<uintptr_t>(found.dlfo_map_end);
}

}  // namespace tovu::validate
