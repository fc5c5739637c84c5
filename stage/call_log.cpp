#include "call_log.h"

#include <fmt/format.h>

namespace stage {
namespace {

struct CallLog {
    bool recording = false;
    std::vector<Call> calls;
};

CallLog& log() {
    static CallLog the_log;  // global, since services cannot receive it as an argument
    return the_log;
}

}  // namespace

void start_recording_calls() {
    log().calls.clear();
    log().recording = true;
}

void stop_recording_calls() {
    log().recording = false;
}

bool is_recording_calls() {
    return log().recording;
}

const std::vector<Call>& recorded_calls() {
    return log().calls;
}

void append_call(Call call) {
    log().calls.push_back(std::move(call));
}

std::string to_string(const Call& call) {
    std::string text = call.name + "(";
    for (const CallArgument& argument : call.arguments) {
        if (&argument != call.arguments.data()) text += ", ";
        if (const double* number = std::get_if<double>(&argument))
            text += fmt::format("{}", *number);
        else
            text += std::get<std::string>(argument);
    }
    return text + ")";
}

}  // namespace stage
