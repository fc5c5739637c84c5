#include "watch.h"

#include <fmt/format.h>
#include <pthread.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

#include "stage/scene/call_watch.h"

namespace tovu::validate {
namespace {

std::atomic<bool> the_watch_is_on = false;
pthread_t the_host_thread;
bool the_stack_is_poisoned = false;
uint32_t the_poison;

bool starts_with(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

std::string words_of(const stage::RunningCall& call) {
    return fmt::format("{}, frame {}", call.entry_point, watch().stage->clock.frame);
}

void set_running(std::string_view words) {
    copy_text(watch().outcome->running, sizeof watch().outcome->running, words);
}

// Fills the stack memory that the next calls will use. Not inlined, so that the array lies below the frame of the
// caller.
[[gnu::noinline]] void fill_stack(uint32_t value) {
    volatile uint32_t words[4096];
    for (volatile uint32_t& word : words) word = value;
}

void entry_begins(const stage::RunningCall& call) {
    Watch& w = watch();
    if (!w.stage) return;
    for (const auto& note : w.on_entry) note(call);
    set_running(words_of(call));
    ++w.outcome->progress;
    w.host_depths.push_back(0);
}

void entry_follows() {
    if (the_stack_is_poisoned) fill_stack(the_poison);
}

void entry_ends(const stage::RunningCall& call) {
    Watch& w = watch();
    if (!w.stage) return;
    w.host_depths.pop_back();
    ++w.outcome->progress;
    for (const auto& note : w.on_return) note(call);
    call.instance->fenced_block.close_fences();
    for (stage::FencedMemory& text : call.instance->fenced_texts) text.close_fences();
    for (stage::RetiredText& text : call.instance->retired_texts) text.memory.close_fences();
    const auto& running = w.stage->running;
    const bool nested = running.size() > 1;
    set_running(nested ? words_of(running[running.size() - 2]) : "");
}

bool service_begins(stage::ServiceCall& call) {
    const char* service = call.name;
    if (!on_host_thread()) {
        // Findings are not thread-safe: other threads wait for each other here.
        static std::atomic_flag busy;
        while (busy.test_and_set()) {
        }
        found("thread.host", Weight::kFailure, fmt::format("{} was called from another thread", service),
              "call the host only inside entry points, on the thread that called them");
        busy.clear();
        return false;
    }
    ++watch().host_depths.back();
    const bool is_early = watch().host_depths.size() > 1 && (!watch().stage || watch().stage->running.empty());
    if (is_early && !starts_with(service, "pel"))
        fail("load.init", fmt::format("{} was called inside PLUGIN_INIT or before", service),
             "ask the host in PLUGIN_INIT_FUNCTION and later");
    return true;
}

void service_ends(stage::ServiceCall&) {
    --watch().host_depths.back();
    if (the_stack_is_poisoned) fill_stack(the_poison);
}

constexpr stage::CallWatch kWatch = {entry_begins, entry_follows, entry_ends, service_begins, service_ends, nullptr};

void note_complaint(const stage::Complaint& complaint) {
    if (starts_with(complaint.call, "pelEvent"))
        return fail("events.nest", fmt::format("{}: {}", complaint.call, complaint.message),
                    "end each section in the entry point that started it, the one started last first");
    if (starts_with(complaint.call, "pelRegister"))
        return fail("register.order", complaint.call + " was called outside of PLUGIN_INIT",
                    "register inside PLUGIN_INIT only");
    if (starts_with(complaint.message, "wrote ")) {
        const bool is_text = complaint.message.find(", the text of ") != std::string::npos;
        return is_text
                   ? fail("text.bounds", complaint.message, "write less than the registered longest length, and a NUL")
                   : fail("block.bounds", complaint.message, "stay below pelRegisterTotalSize");
    }
    if (starts_with(complaint.call, "PLUGIN_")) return fail("life.cycle", complaint.message, "return 1");
    if (watch().host_is_wrong) return;  // caused by a wrong answer of the host
    fail("life.cycle", fmt::format("{}: {}", complaint.call, complaint.message),
         "set out values before the call, and test a handle with _api__object_valid where it is used");
}

std::string offset_words(const char* act, uintptr_t address, const char* data, size_t size) {
    return fmt::format("{} at offset {} of {}", act, static_cast<int64_t>(address - reinterpret_cast<uintptr_t>(data)),
                       size);
}

bool pass_instance_fence(stage::Instance& instance, uintptr_t address, const char* act) {
    const auto& parameters = stage::plugin(instance.plugin).parameters;
    if (const stage::FencedMemory& block = instance.fenced_block; block.covers(address)) {
        block.allow(address);
        fail("block.bounds", offset_words(act, address, block.data(), block.size()), "stay below pelRegisterTotalSize");
        return true;
    }
    for (const stage::RetiredText& text : instance.retired_texts) {
        if (!text.memory.covers(address)) continue;
        text.memory.allow(address);
        fail("text.moves",
             fmt::format("used an old address of the text of '{}'", parameters[static_cast<size_t>(text.index)].name),
             "read the slot afresh in each call, and copy what is kept");
        return true;
    }
    for (size_t i = 0; i < instance.fenced_texts.size(); ++i) {
        const stage::FencedMemory& text = instance.fenced_texts[i];
        if (!text.covers(address)) continue;
        text.allow(address);
        fail("text.bounds",
             offset_words(act, address, text.data(), text.size()) +
                 fmt::format(" bytes of the text of '{}'", parameters[i].name),
             "stop at the closing NUL");
        return true;
    }
    return false;
}

}  // namespace

Watch& watch() {
    static Watch the_watch;
    return the_watch;
}

void begin_watch(const std::string& check, SharedOutcome& outcome, const ElfFile& library) {
    watch().check = check;
    watch().library = &library;
    watch().outcome = &outcome;
    the_host_thread = pthread_self();
    the_watch_is_on = true;
    stage::watch_calls(&kWatch);
}

void watch_stage(stage::Stage& stage) {
    watch().stage = &stage;
    stage.complaints.sink = note_complaint;
}

void found(std::string_view check, Weight weight, const std::string& message, const std::string& right) {
    Watch& w = watch();
    if (check != w.check && std::find(w.stands_for.begin(), w.stands_for.end(), check) == w.stands_for.end()) return;
    const bool is_running = w.stage && !w.stage->running.empty();
    std::string where = is_running ? words_of(w.stage->running.back()) : std::string(w.outcome->running);
    if (!w.during.empty()) where += (where.empty() ? "" : ", ") + w.during;
    add_finding(*w.outcome, weight, where, message, right);
}

void fail(std::string_view check, const std::string& message, const std::string& right) {
    found(check, Weight::kFailure, message, right);
}

void poison_stack(uint32_t word) {
    the_stack_is_poisoned = true;
    the_poison = word;
}

RunningCode::RunningCode(std::string_view words) : before_(watch().outcome->running) {
    set_running(words);
    watch().host_depths.push_back(0);
}

RunningCode::~RunningCode() {
    set_running(before_);
    watch().host_depths.pop_back();
}

bool pass_fence(uintptr_t address, bool is_write) {
    Watch& w = watch();
    const char* act = is_write ? "wrote" : "read";
    for (const FencedRegion& region : w.regions) {
        if (!region.memory->covers(address)) continue;
        region.memory->allow(address);
        const bool is_open = region.memory->is_open();
        fail(region.check,
             fmt::format("{}{} {}{}", act, is_open ? " beyond" : "", region.what, is_open ? "" : region.when_forbidden),
             region.right);
        return true;
    }
    if (!w.stage) return false;
    return std::any_of(w.stage->geometries.begin(), w.stage->geometries.end(), [&](auto& entry) {
        return entry.second.instance && pass_instance_fence(*entry.second.instance, address, act);
    });
}

bool frees_lent_memory(const void* memory) {
    if (!in_plugin_code() || !on_host_thread()) return false;
    for (const FencedRegion& region : watch().regions) {
        if (!region.memory->covers(reinterpret_cast<uintptr_t>(memory))) continue;
        fail(region.check, "freed " + region.what, region.right);
        return true;
    }
    return false;
}

size_t readable_bytes(const void* address, size_t bytes) {
    std::vector<char> copy(std::min<size_t>(bytes, 1 << 16));
    size_t done = 0;
    while (done < bytes) {
        const iovec local{copy.data(), std::min(copy.size(), bytes - done)};
        const iovec remote{static_cast<char*>(const_cast<void*>(address)) + done, local.iov_len};
        const ssize_t count = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
        if (count <= 0) break;
        done += static_cast<size_t>(count);
    }
    return done;
}

bool on_host_thread() {
    return pthread_equal(pthread_self(), the_host_thread);
}

bool in_plugin_code() {
    return the_watch_is_on && (!on_host_thread() || watch().host_depths.back() == 0);
}

}  // namespace tovu::validate
