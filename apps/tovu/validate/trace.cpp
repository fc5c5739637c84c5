#include "trace.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "child.h"
#include "stage/call_log.h"
#include "watch.h"

namespace tovu::validate {
namespace {

constexpr size_t kMostLines = 3000;  // per call of an entry point; further calls are hashed into one line

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Writes the calls that were recorded since the last time.
void write_calls(std::FILE* file, const std::string& where) {
    const std::vector<stage::Call>& calls = stage::recorded_calls();
    size_t hash = 14695981039346656037u;  // FNV-1a of the calls that are not written
    for (size_t i = 0; i < calls.size(); ++i) {
        const std::string text = stage::to_string(calls[i]);
        if (i < kMostLines) {
            std::fprintf(file, "%s\t%s\n", where.c_str(), text.c_str());
            continue;
        }
        for (const char character : text) hash = (hash ^ static_cast<unsigned char>(character)) * 1099511628211u;
    }
    if (calls.size() > kMostLines)
        std::fprintf(file, "%s\tone of %zu further calls (%zx)\n", where.c_str(), calls.size() - kMostLines, hash);
    stage::start_recording_calls();  // clears the recording
}

void record_into(int descriptor, const std::function<void()>& scenario, const std::function<int32_t()>& container) {
    const File file(fdopen(dup(descriptor), "w"));
    if (!file) throw std::runtime_error("no file for a trace");
    std::string where;
    const auto hand_over = [&] {
        const auto& running = watch().stage->running;
        const bool is_wanted = !running.empty() && running.back().container_handle == container();
        if (is_wanted)
            write_calls(file.get(),
                        fmt::format("{}, frame {}", running.back().entry_point, watch().stage->clock.frame));
        else
            stage::start_recording_calls();
    };
    watch().on_entry.push_back([&](const stage::RunningCall&) {
        // The new call is already the last of `running`. Calls recorded before it belong to the call around it or, if
        // there is none, are answers that send_requests recorded.
        const auto& running = watch().stage->running;
        if (running.size() == 1)
            write_calls(file.get(),
                        "PLUGIN_DISPATCHER_CALLBACK");  // without a frame, which may be the next one already
        else if (running[running.size() - 2].instance->container_handle == container())
            write_calls(file.get(), fmt::format("{}, frame {}", running[running.size() - 2].entry_point,
                                                watch().stage->clock.frame));
        else
            stage::start_recording_calls();
    });
    watch().on_return.push_back([&](const stage::RunningCall&) { hand_over(); });
    stage::start_recording_calls();
    scenario();
    std::fflush(file.get());
}

std::vector<TraceLine> read_lines(int descriptor) {
    lseek(descriptor, 0, SEEK_SET);
    const File file(fdopen(dup(descriptor), "r"));
    std::vector<TraceLine> lines;
    char* line = nullptr;
    size_t capacity = 0;
    while (file && getline(&line, &capacity, file.get()) > 0) {
        std::string_view text(line);
        if (text.back() == '\n') text.remove_suffix(1);
        const size_t tab = std::min(text.find('\t'), text.size() - 1);
        lines.push_back({std::string(text.substr(0, tab)), std::string(text.substr(tab + 1))});
    }
    std::free(line);
    return lines;
}

/// The first difference of two runs; empty if they are equal.
struct Difference {
    std::string where;
    std::string message;
};

Difference first_difference(const std::vector<TraceLine>& one, const std::vector<TraceLine>& other) {
    const size_t both = std::min(one.size(), other.size());
    for (size_t i = 0; i < both; ++i)
        if (one[i].where != other[i].where || one[i].call != other[i].call)
            return {other[i].where, fmt::format("{} instead of {}", other[i].call, one[i].call)};
    if (one.size() == other.size()) return {};
    const std::vector<TraceLine>& longer = one.size() > other.size() ? one : other;
    return {longer[both].where, fmt::format("{} in one run only", longer[both].call)};
}

}  // namespace

std::vector<TraceLine> trace_of(const std::function<void()>& scenario, const std::function<int32_t()>& container) {
    const int descriptor = memfd_create("trace", MFD_CLOEXEC);
    if (descriptor < 0) throw std::runtime_error("no file for a trace");
    if (!run_in_grandchild([&] { record_into(descriptor, scenario, container); })) _exit(1);  // the outcome says why
    std::vector<TraceLine> lines = read_lines(descriptor);
    close(descriptor);
    return lines;
}

bool expect_equal(const char* check, const std::vector<TraceLine>& one, const std::vector<TraceLine>& other,
                  const std::function<std::vector<TraceLine>()>& one_again, const std::string& when,
                  const std::string& right) {
    const Difference difference = first_difference(one, other);
    if (difference.message.empty()) return true;
    if (!first_difference(one, one_again()).message.empty()) {
        found(check, Weight::kNote, "two equal runs differ, so that runs are not compared", "");
        return false;
    }
    const RunningCode running(difference.where);
    fail(check, fmt::format("{}: {}", when, difference.message), right);
    return false;
}

}  // namespace tovu::validate
