#include "fault_guard.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>

#include "stage/output/unfinished.h"
#include "stage/plugins/plugin_code.h"

namespace tovu {

namespace {

using stage::PluginCode;

struct CrashSignal {
    int number;
    const char* words;
    struct sigaction before;  // the previous action, for faults outside plug-in code
};

// The state of the handlers is global, since a signal handler cannot receive it as an argument.
CrashSignal the_crash_signals[] = {
    {SIGSEGV, "SIGSEGV (bad memory access)", {}},
    {SIGBUS, "SIGBUS (bus error)", {}},
    {SIGILL, "SIGILL (illegal instruction)", {}},
    {SIGFPE, "SIGFPE (arithmetic error)", {}},
    {SIGABRT, "SIGABRT (abort)", {}},
};
alignas(16) char the_handler_stack[65536];  // the normal stack can be full in a handler
pid_t the_guarded_process;
std::terminate_handler the_terminate_handler_before;
timer_t the_timer;
double the_timeout_seconds;
std::atomic<int> the_ticks_allowed;  // longest duration of a call, in timer ticks

// A line for standard error, built without heap allocation. Longer text is truncated.
struct Line {
    char text[4096];
    size_t length = 0;

    void add(const char* words) {
        const size_t count = std::min(std::strlen(words), sizeof text - length);
        std::memcpy(text + length, words, count);
        length += count;
    }
    void add(int64_t number) {
        length = static_cast<size_t>(std::to_chars(text + length, std::end(text), number).ptr - text);
    }
    // "PLUGIN_NEW_GEOM of TovuSmoke in 'steam', frame 3"
    void add(const PluginCode& code) {
        add(code.entry_point);
        add(" of ");
        add(code.plugin);
        if (!code.container) return;
        add(" in '");
        add(code.container);
        add("', frame ");
        add(code.frame);
    }
};

Line begin_line() {
    Line line;
    if (isatty(STDERR_FILENO)) line.add("\r\033[K");  // overwrites the line of progress
    line.add("tovu: ");
    return line;
}

[[noreturn]] void end_process(Line& line, int status) {
    stage::discard_unfinished();  // before the write, which can block
    line.length = std::min(line.length, sizeof line.text - 1);
    line.add("\n");
    signal(SIGPIPE, SIG_IGN);
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.text, line.length);
    _exit(status);
}

[[noreturn]] void end_by_fault(const PluginCode& code, const char* deed, const char* detail) {
    Line line = begin_line();
    line.add(code);
    line.add(deed);
    line.add(detail);
    end_process(line, 2);
}

// True in a process that a plug-in forked. Such a process inherits the handlers, but the output belongs to its parent.
bool is_forked() {
    return getpid() != the_guarded_process;
}

const PluginCode* guarded_code() {
    return is_forked() ? nullptr : stage::running_plugin_code();
}

void on_crash(int received, siginfo_t* info, void*) {
    const CrashSignal* crash = the_crash_signals;
    while (crash->number != received) ++crash;
    if (const PluginCode* code = guarded_code()) end_by_fault(*code, " crashed: ", crash->words);
    // After the return, a faulty instruction runs again and raises the signal again. A signal from kill or raise must
    // be raised again here.
    sigaction(received, &crash->before, nullptr);
    if (info->si_code <= 0) raise(received);
}

void on_ending_signal(int received) {
    if (is_forked()) {
        signal(received, SIG_DFL);
        raise(received);
        return;
    }
    Line line = begin_line();
    line.add("interrupted");
    if (const PluginCode* code = guarded_code()) {
        line.add(" during ");
        line.add(*code);
    }
    end_process(line, 128 + received);
}

void on_exit() {
    if (const PluginCode* code = guarded_code()) end_by_fault(*code, " called exit", "");
}

[[noreturn]] void on_terminate() {
    const PluginCode* code = guarded_code();
    if (!code) {
        the_terminate_handler_before();
        std::abort();
    }
    if (!std::current_exception()) end_by_fault(*code, " called std::terminate", "");
    try {
        throw;
    } catch (const std::exception& thrown) {
        end_by_fault(*code, " threw a C++ exception: ", thrown.what());
    } catch (...) {
        end_by_fault(*code, " threw a C++ exception", "");
    }
}

void on_tick(int) {
    static uint64_t seen_call;
    static int seen_ticks;
    const PluginCode* code = guarded_code();
    if (!code || stage::plugin_calls_begun() != seen_call) {
        seen_call = stage::plugin_calls_begun();
        seen_ticks = 0;
        return;
    }
    if (++seen_ticks < the_ticks_allowed) return;
    char seconds[32] = {};
    std::to_chars(seconds, std::end(seconds) - 1, the_timeout_seconds);
    Line line = begin_line();
    line.add(*code);
    line.add(" did not return within ");
    line.add(seconds);
    line.add(" seconds (--plugin-timeout)");
    end_process(line, 2);
}

struct sigaction action_with(int flags) {
    struct sigaction action {};
    action.sa_flags = flags | SA_ONSTACK;
    sigfillset(&action.sa_mask);  // no signal interrupts a handler
    return action;
}

}  // namespace

void install_fault_guard() {
    the_guarded_process = getpid();
    stack_t stack{};
    stack.ss_sp = the_handler_stack;
    stack.ss_size = sizeof the_handler_stack;
    sigaltstack(&stack, nullptr);
    for (CrashSignal& crash : the_crash_signals) {
        struct sigaction action = action_with(SA_SIGINFO);
        action.sa_sigaction = on_crash;
        sigaction(crash.number, &action, &crash.before);
    }
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler == SIG_IGN) continue;  // nohup and shells ignore it for background processes
        struct sigaction action = action_with(0);
        action.sa_handler = on_ending_signal;
        sigaction(number, &action, nullptr);
    }
    std::atexit(on_exit);
    at_quick_exit(on_exit);
    the_terminate_handler_before = std::set_terminate(on_terminate);

    struct sigaction action = action_with(SA_RESTART);
    action.sa_handler = on_tick;
    sigaction(SIGALRM, &action, nullptr);
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGALRM;
    timer_create(CLOCK_MONOTONIC, &event, &the_timer);
    set_plugin_timeout(kPluginTimeoutSeconds);
}

void set_plugin_timeout(double seconds) {
    constexpr double kMaxTick = 0.5;
    constexpr double kMinTick = 0.001;
    const double tick = std::clamp(seconds / 10, kMinTick, kMaxTick);
    the_timeout_seconds = seconds;
    the_ticks_allowed = static_cast<int>(std::ceil(seconds / tick));
    itimerspec period{};
    if (seconds > 0) period.it_interval.tv_nsec = std::lround(tick * 1e9);
    period.it_value = period.it_interval;
    timer_settime(the_timer, 0, &period, nullptr);
}

}  // namespace tovu
