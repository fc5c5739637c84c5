// A record of every call that plug-ins make to the host, services and OpenGL alike, in the order they came. For tests.
#pragma once

#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "stage_export.h"

namespace stage {

using CallArgument = std::variant<double, std::string>;

/// One call: its exported name, and its arguments in order (numbers as double, texts as text; out pointers and plain
/// addresses are left out, `const float*` matrices and vectors are spread into their numbers).
struct Call {
    std::string name;
    std::vector<CallArgument> arguments;
};

/// Recording is off until started; starting drops what was recorded before. Process-wide, as the services are.
STAGE_EXPORT void start_recording_calls();
STAGE_EXPORT void stop_recording_calls();
STAGE_EXPORT bool is_recording_calls();
STAGE_EXPORT const std::vector<Call>& recorded_calls();

/// "name(1, 2.5, text)": for messages and for comparing logs as text.
STAGE_EXPORT std::string to_string(const Call& call);

STAGE_EXPORT void append_call(Call call);

/// A call with its numbers and texts (a null text is an empty one); other pointers are left out.
template <class... Arguments>
Call make_call(const char* name, Arguments... arguments) {
    Call call{name, {}};
    [[maybe_unused]] const auto add = [&call](auto argument) {
        using Argument = decltype(argument);
        if constexpr (std::is_arithmetic_v<Argument>)
            call.arguments.emplace_back(static_cast<double>(argument));
        else if constexpr (std::is_same_v<Argument, const char*>)
            call.arguments.emplace_back(std::string(argument ? argument : ""));
        else if constexpr (!std::is_pointer_v<Argument>)
            call.arguments.emplace_back(std::string(argument));
    };
    (add(arguments), ...);
    return call;
}

/// Notes a call when recording is on.
template <class... Arguments>
void record_call(const char* name, Arguments... arguments) {
    if (is_recording_calls()) append_call(make_call(name, arguments...));
}

}  // namespace stage
