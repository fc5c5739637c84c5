#include "plugin_code.h"

#include <atomic>

namespace stage {
namespace {

// Global, since a signal handler cannot receive them as arguments.
std::atomic<const PluginCode*> the_running_code = nullptr;
std::atomic<uint64_t> the_calls_begun = 0;

}  // namespace

PluginCode::PluginCode(const char* entry_name, const char* plugin_name, const char* container_name,
                       int64_t frame_number)
    : entry_point(entry_name),
      plugin(plugin_name),
      container(container_name),
      frame(frame_number),
      outer(the_running_code.load(std::memory_order_relaxed)) {
    // Plain stores: one thread writes, and an atomic increment would cost more than the rest of a call.
    if (!outer) the_calls_begun.store(the_calls_begun.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    the_running_code.store(this, std::memory_order_release);
}

PluginCode::~PluginCode() {
    the_running_code.store(outer, std::memory_order_release);
}

const PluginCode* running_plugin_code() noexcept {
    return the_running_code.load(std::memory_order_acquire);
}

uint64_t plugin_calls_begun() noexcept {
    return the_calls_begun.load(std::memory_order_relaxed);
}

}  // namespace stage
