// The running plug-in code, in a form that a signal handler can read.
#pragma once

#include <cstdint>

#include "stage/stage_export.h"

namespace stage {

/// Marks plug-in code as running while the object exists. Can be nested, for dispatcher calls. The texts are not copied
/// and must outlive the object.
struct PluginCode {
    const char* entry_point;  // exported name; "loading" for code that runs when the library is loaded
    const char* plugin;       // its name; before the registration, the path of the library
    const char* container;    // the instance's; null while loading
    int64_t frame;            // meaningful with a container
    const PluginCode* outer;  // the code that runs around it; null for the outermost

    PluginCode(const char* entry_name, const char* plugin_name, const char* container_name, int64_t frame_number);
    ~PluginCode();
    PluginCode(const PluginCode&) = delete;
    PluginCode& operator=(const PluginCode&) = delete;
};

/// The innermost running plug-in code, or null. Async-signal-safe.
STAGE_EXPORT const PluginCode* running_plugin_code() noexcept;

/// The number of started outermost calls into plug-ins. While code is running, an unchanged number means the same call.
/// Async-signal-safe.
STAGE_EXPORT uint64_t plugin_calls_begun() noexcept;

/// Calls a plug-in. An exception that leaves the plug-in ends the process through std::terminate.
template <class Call>
auto call_plugin(const Call& call) noexcept {
    return call();
}

}  // namespace stage
