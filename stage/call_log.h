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

/// Notes a call when recording is on. Numbers and texts only.
template <class... Arguments>
void record_call(const char* name, Arguments... arguments) {
    if (!is_recording_calls()) return;
    Call call{name, {}};
    [[maybe_unused]] const auto add = [&call](auto argument) {
        if constexpr (std::is_arithmetic_v<decltype(argument)>)
            call.arguments.emplace_back(static_cast<double>(argument));
        else
            call.arguments.emplace_back(std::string(argument));
    };
    (add(arguments), ...);
    append_call(std::move(call));
}

}  // namespace stage
