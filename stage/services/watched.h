// Reports service calls to the call watch and to the call log.
#pragma once

#include <array>
#include <type_traits>

#include "stage/call_log.h"
#include "stage/scene/call_watch.h"

namespace stage {

/// Records the call and calls `answer`, unless the call watch answers the call itself. fallback: the initial result,
/// for a watch that answers without one.
template <class Answer, class... Arguments>
auto watched(const char* name, int32_t fallback, const Answer& answer, Arguments... arguments) {
    using Value = decltype(answer());
    const auto answered = [&] {
        record_call(name, arguments...);
        return answer();
    };
    if (!call_watch) return answered();
    const std::array<CallValue, sizeof...(arguments)> values = {CallValue(arguments)...};
    ServiceCall call{name, values, !std::is_void_v<Value>, fallback};
    if (call_watch->service_begins && !call_watch->service_begins(call)) return static_cast<Value>(call.result);
    if constexpr (std::is_void_v<Value>)
        answered();
    else
        call.result = answered();
    if (call_watch->service_ends) call_watch->service_ends(call);
    return static_cast<Value>(call.result);
}

}  // namespace stage
