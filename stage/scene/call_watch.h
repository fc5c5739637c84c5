// A tool that is told about every call between the Stage and its plug-ins. Without one, a call costs one comparison
// more.
#pragma once

#include <cstdint>
#include <span>
#include <variant>

#include "stage/stage_export.h"

namespace stage {

struct RunningCall;

/// An argument of a call, as it is passed. An out value is the address that it goes to.
using CallValue = std::variant<int32_t, float, const char*, int32_t*, float*, double*, uint8_t*, uint8_t**, void*,
                               const char* const*>;

/// A call of a service by a plug-in.
struct ServiceCall {
    const char* name;  // as exported
    std::span<const CallValue> arguments;
    bool has_result;
    int32_t result;  // valid once the Stage has answered; before that, what a service without a Stage answers
};

/// Null functions are not called. All but service_begins run on the thread that runs the Stage.
struct CallWatch {
    void (*entry_begins)(const RunningCall& call) = nullptr;  // before an entry point of an instance runs
    void (*entry_follows)() = nullptr;  // directly before its code, where the stack is as deep as for it
    void (*entry_ends)(const RunningCall& call) = nullptr;  // after it has returned
    /// A plug-in calls a service, on any thread. False: the Stage does not answer; the result is the one in `call`, the
    /// out values are as this function leaves them.
    bool (*service_begins)(ServiceCall& call) = nullptr;
    void (*service_ends)(ServiceCall& call) = nullptr;  // not after a refusal
    /// With watched_opengl() in force only (stage/replay/watched_opengl.h).
    void (*opengl_called)(const char* name, std::span<const CallValue> arguments) = nullptr;
};

/// Process-wide, as the services are. `watch` must stay where it is; null ends the watch.
STAGE_EXPORT void watch_calls(const CallWatch* watch);

STAGE_EXPORT extern const CallWatch* call_watch;  // read it only

}  // namespace stage
