// Callbacks for every call between the Stage and its plug-ins. Without a watch they cost one comparison per call.
#pragma once

#include <cstdint>
#include <span>
#include <variant>

#include "stage/stage_export.h"

namespace stage {

struct RunningCall;

/// An argument of a call as it is passed. For an out value it is the address.
using CallValue = std::variant<int32_t, float, const char*, int32_t*, float*, double*, uint8_t*, uint8_t**, void*,
                               const char* const*>;

/// A call of a service by a plug-in.
struct ServiceCall {
    const char* name;  // as exported
    std::span<const CallValue> arguments;
    bool has_result;
    int32_t result;  // the answer of the Stage; before that, the answer of a service without a Stage
};

/// Null functions are not called. All except service_begins are called on the thread that runs the Stage.
struct CallWatch {
    void (*entry_begins)(const RunningCall& call) = nullptr;  // before an entry point of an instance runs
    void (*entry_follows)() = nullptr;                        // directly before its code, at the same stack depth
    void (*entry_ends)(const RunningCall& call) = nullptr;    // after it has returned
    /// Before a service that a plug-in calls, on any thread. If it returns false, the Stage does not answer: the result
    /// is `call.result`, and the out values are those that this function has set.
    bool (*service_begins)(ServiceCall& call) = nullptr;
    void (*service_ends)(ServiceCall& call) = nullptr;  // not if service_begins returned false
    /// Only with the table watched_opengl() (stage/replay/watched_opengl.h).
    void (*opengl_called)(const char* name, std::span<const CallValue> arguments) = nullptr;
};

/// Sets the watch of the process. `watch` must stay valid; null removes the watch.
STAGE_EXPORT void watch_calls(const CallWatch* watch);

STAGE_EXPORT extern const CallWatch* call_watch;  // read only

}  // namespace stage
