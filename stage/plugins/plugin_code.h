// Which plug-in code is running, in a form that a signal handler can read.
#pragma once

#include <cstdint>

#include "stage/stage_export.h"

namespace stage {

/// Plug-in code that runs for as long as this object lives. Nests, since dispatcher calls do. The texts are the
/// caller's and outlive it.
struct PluginCode {
    const char* entry_point;  // exported name; "loading" for what a library runs by itself when it is loaded
    const char* plugin;       // its name; the library's path until it has registered
    const char* container;    // the instance's; null while loading
    int64_t frame;            // meaningful with a container
    const PluginCode* outer;  // what was running before; null for the outermost

    PluginCode(const char* entry_name, const char* plugin_name, const char* container_name, int64_t frame_number);
    ~PluginCode();
    PluginCode(const PluginCode&) = delete;
    PluginCode& operator=(const PluginCode&) = delete;
};

/// The innermost plug-in code that runs, or null. Async-signal-safe.
STAGE_EXPORT const PluginCode* running_plugin_code() noexcept;

/// How many outermost calls into plug-ins have begun. While code is running, an unchanged number means that it is the
/// same call. Async-signal-safe.
STAGE_EXPORT uint64_t plugin_calls_begun() noexcept;

/// Calls into a plug-in. No exception may cross the boundary: one that does ends the process through std::terminate.
template <class Call>
auto call_plugin(const Call& call) noexcept {
    return call();
}

}  // namespace stage
