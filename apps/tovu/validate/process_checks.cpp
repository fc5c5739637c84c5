// Checks of group memory: the thread that calls the host, and the state of the process.
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cfenv>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <string>
#include <thread>

#include "checks.h"
#include "rig.h"
#include "stage/plugins/registration.h"
#include "watch.h"

#if defined(__x86_64__) || defined(__i386__)
#include <xmmintrin.h>
#endif

extern char** environ;

namespace tovu::validate {
namespace {

struct ProcessState {
    int rounding;
    unsigned int float_control;  // flushing to zero, traps
    std::string locale;
    std::array<struct sigaction, 65> signals;
    sigset_t blocked;
    std::string folder;
    mode_t file_mask;
    std::string environment;
    itimerval timer;
    std::terminate_handler on_terminate;
    std::new_handler on_no_memory;
};

unsigned int float_control() {
#if defined(__x86_64__) || defined(__i386__)
    constexpr unsigned int kStatusBits = 0x3F;
    return _mm_getcsr() & ~kStatusBits;
#else
    return 0;
#endif
}

ProcessState process_state() {
    ProcessState state{};
    state.rounding = std::fegetround();
    state.float_control = float_control();
    state.locale = std::setlocale(LC_ALL, nullptr);
    for (int number = 1; number <= 64; ++number)
        sigaction(number, nullptr, &state.signals[static_cast<size_t>(number)]);
    pthread_sigmask(SIG_SETMASK, nullptr, &state.blocked);
    std::error_code ignored;
    state.folder = std::filesystem::current_path(ignored).string();
    state.file_mask = umask(0);
    umask(state.file_mask);
    for (char** entry = environ; entry && *entry; ++entry) state.environment += std::string(*entry) + '\n';
    getitimer(ITIMER_REAL, &state.timer);
    state.on_terminate = std::get_terminate();
    state.on_no_memory = std::get_new_handler();
    return state;
}

void report(const std::string& message) {
    fail("process.state", message, "leave the process as it is, or put it back before the call returns");
}

bool is_set(const itimerval& timer) {
    return timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0;
}

void compare(const ProcessState& before, const ProcessState& now) {
    if (now.rounding != before.rounding) report("changed the rounding mode");
    if (now.float_control != before.float_control && now.rounding == before.rounding)
        report(fmt::format(
            "changed how floating point works: control bits {:#x} instead of {:#x} (-ffast-math does so when it links)",
            now.float_control, before.float_control));
    if (now.locale != before.locale) report(fmt::format("changed the locale to {}", now.locale));
    for (size_t number = 1; number <= 64; ++number) {
        const struct sigaction& a = before.signals[number];
        const struct sigaction& b = now.signals[number];
        if (a.sa_handler != b.sa_handler || a.sa_flags != b.sa_flags)
            report(fmt::format("changed what signal {} ({}) does", number, strsignal(static_cast<int>(number))));
    }
    if (std::memcmp(&before.blocked, &now.blocked, sizeof(unsigned long)) != 0)
        report("changed which signals are blocked");
    if (now.folder != before.folder) report(fmt::format("changed the current folder to {}", now.folder));
    if (now.file_mask != before.file_mask) report("changed the mask of new files (umask)");
    if (now.environment != before.environment) report("changed the environment");
    if (is_set(now.timer) && !is_set(before.timer)) report("set a timer");
    if (now.on_terminate != before.on_terminate) report("changed the handler of std::terminate");
    if (now.on_no_memory != before.on_no_memory) report("changed the handler of operator new");
}

/// Reports each change of the process state by the plug-in's code once.
class StateWatch {
  public:
    StateWatch() : state_(process_state()) {}
    void look() {
        ProcessState now = process_state();
        compare(state_, now);
        state_ = std::move(now);
    }

  private:
    ProcessState state_;
};

int64_t entries_in(const char* folder) {
    std::error_code ignored;
    int64_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        (void)entry;
        ++count;
    }
    return count;
}

void wait_for_threads() {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

}  // namespace

void check_thread_host(const Subject& subject) {
    const auto rig = make_rig(subject);
    const int64_t threads_before = entries_in("/proc/self/task");
    TourOptions options;
    options.settings = 5;
    options.limits = false;
    options.each_frame = wait_for_threads;
    tour(*rig, options);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    if (const int64_t threads = entries_in("/proc/self/task") - threads_before; threads > 0)
        found("thread.host", Weight::kWarning, fmt::format("{} threads run on after the last clean-up", threads),
              "end and join threads in PLUGIN_CLEANUP_FUNCTION");
}

void check_process_state(const Subject& subject) {
    StateWatch state;
    const int64_t files_before = entries_in("/proc/self/fd");
    {
        const stage::StagePtr host = stage::make_stage();
        watch_stage(*host);
        const RunningCode running("PLUGIN_INIT");
        (void)stage::try_plugin(*host, subject.path);
        state.look();
    }
    watch().stage = nullptr;
    const auto rig = make_rig(subject);
    state.look();
    watch().on_return.push_back([&](const stage::RunningCall&) { state.look(); });
    tour(*rig);
    if (const int64_t files = entries_in("/proc/self/fd") - files_before; files > 0)
        found("process.state", Weight::kWarning, fmt::format("{} files stay open after the last clean-up", files),
              "close files in PLUGIN_CLEANUP_FUNCTION at the latest");
}

}  // namespace tovu::validate
