// A log of the calls of plug-ins to services and OpenGL, in order. For tests.
#pragma once

#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "stage_export.h"

namespace stage {

using CallArgument = std::variant<double, std::string>;

/// One call: its exported name and its arguments in order. Numbers are doubles, texts are strings. Pointers are left
/// out, except that vectors and matrices given to OpenGL as `const float*` appear as their numbers.
struct Call {
    std::string name;
    std::vector<CallArgument> arguments;
};

/// Recording is off at first; starting it clears the log. There is one log for the process.
STAGE_EXPORT void start_recording_calls();
STAGE_EXPORT void stop_recording_calls();
STAGE_EXPORT bool is_recording_calls();
STAGE_EXPORT const std::vector<Call>& recorded_calls();

/// "name(1, 2.5, text)": for messages and for comparing logs as text.
STAGE_EXPORT std::string to_string(const Call& call);

STAGE_EXPORT void append_call(Call call);

/// Makes a Call of the numbers and texts; a null text becomes an empty one, other pointers are left out.
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

/// Adds a call to the log while recording is on.
template <class... Arguments>
void record_call(const char* name, Arguments... arguments) {
    if (is_recording_calls()) append_call(make_call(name, arguments...));
}

}  // namespace stage
