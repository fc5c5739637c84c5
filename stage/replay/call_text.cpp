#include "call_text.h"

#include <fmt/format.h>
#include <tovu/exchange.h>
#include <tovu/spawn_requests.h>

#include <algorithm>
#include <cstring>

namespace stage {
namespace {

void add_item(std::string& list, const std::string& item) {
    if (!list.empty()) list += ", ";
    list += item;
}

std::string floats_text(const void* data, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        float value;
        std::memcpy(&value, static_cast<const char*>(data) + i * sizeof value, sizeof value);
        add_item(text, value_text(value));
    }
    return text;
}

std::string attach_text(const void* data) {
    ParticleAttachRequest request;
    std::memcpy(&request, data, sizeof request);
    return fmt::format("{}, {}, {}", request.birth_limit, value_text(request.death_acceleration), request.owns_colour);
}

std::string point_text(const void* data) {
    return floats_text(data, 3);
}

/// The texts of the data and the reply of a known request.
struct RequestRow {
    int32_t code;
    std::string (*sent)(const void* data);      // text of the data before the request; null: no text
    std::string (*returned)(const void* data);  // text of the data after the request; null: no text
    bool replies_address;                       // true: the reply is an address, false: an int32_t
};
constexpr RequestRow kRequests[] = {
    {TOVU_REQUEST_ATTACH, attach_text, nullptr, true},
    {TOVU_REQUEST_DETACH, nullptr, nullptr, true},
    {TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, nullptr, nullptr, false},
    {TOVU_REQUEST_NEW_SPAWN_POINT, nullptr, point_text, false},
    {TOVU_REQUEST_IS_INSIDE, point_text, nullptr, false},
};

const RequestRow* known_request(int32_t code) {
    for (const RequestRow& row : kRequests)
        if (row.code == code) return &row;
    return nullptr;
}

/// A text such as "'RAD1'", or a number if the code contains characters that are not printable.
std::string code_text(int32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(static_cast<uint32_t>(code) >> shift & 0xFF);
    for (const char character : text)
        if (character <= ' ' || character > '~' || character == '\'') return std::to_string(code);
    return '\'' + text + '\'';
}

std::string reply_text(const RequestRow& request, const void* reply) {
    if (!reply) return "none";
    if (!request.replies_address) {
        int32_t value;
        std::memcpy(&value, reply, sizeof value);
        return std::to_string(value);
    }
    const void* address;
    std::memcpy(&address, reply, sizeof address);
    return address ? "address" : "null";
}

std::string event_text(int32_t handle) {
    for (const auto& owner : loaded_plugins())
        for (const ProfilingEvent& event : owner->events)
            if (event.handle == handle) return quoted(event.name);
    return std::to_string(handle);
}

bool is_one_of(std::string_view name, std::initializer_list<std::string_view> names) {
    for (const std::string_view one : names)
        if (one == name) return true;
    return false;
}

std::string dispatch_text(std::span<const CallValue> arguments) {
    const int32_t code = std::get<int32_t>(arguments[1]);
    const void* data = std::get<void*>(arguments[2]);
    std::string text = std::to_string(std::get<int32_t>(arguments[0])) + ", " + code_text(code);
    const RequestRow* request = known_request(code);
    if (request && request->sent && data) add_item(text, request->sent(data));
    return text;
}

std::string arguments_text(std::string_view name, std::span<const CallValue> arguments) {
    if (name == "_api__geom_dispatcher") return dispatch_text(arguments);
    if (is_one_of(name, {"pelEventStart", "pelEventEnd"})) return event_text(std::get<int32_t>(arguments[0]));
    const bool advances = is_one_of(name, {"_api__geomod_next_mesh", "_api__geomod_next_vertex"});
    std::string text;
    for (const CallValue& argument : arguments) {
        if (const auto* whole = std::get_if<int32_t>(&argument))
            add_item(text, value_text(*whole));
        else if (const auto* number = std::get_if<float>(&argument))
            add_item(text, value_text(*number));
        else if (const auto* characters = std::get_if<const char*>(&argument))
            add_item(text, *characters ? quoted(*characters) : "null");
        else if (const auto* cursor = std::get_if<int32_t*>(&argument); advances && cursor && *cursor)
            add_item(text, value_text(**cursor));
    }
    return text;
}

/// Registration calls store numbers as double. Whole numbers and floats are written in their short form.
std::string registered_text(const CallArgument& argument) {
    const auto* number = std::get_if<double>(&argument);
    if (!number) return quoted(std::get<std::string>(argument));
    const bool fits = *number >= INT32_MIN && *number <= INT32_MAX;
    if (fits && static_cast<double>(static_cast<int32_t>(*number)) == *number)
        return value_text(static_cast<int32_t>(*number));
    if (static_cast<double>(static_cast<float>(*number)) == *number) return value_text(static_cast<float>(*number));
    return value_text(*number);
}

/// The result of an entry point, or its reply to a request; empty if there is none.
std::string entry_answer(const RunningCall& call) {
    if (call.has_result) return value_text(call.result);
    if (std::string_view(call.entry_point) != "PLUGIN_DISPATCHER_CALLBACK") return "";
    const RequestRow* request = known_request(std::get<int32_t>(call.arguments[0]));
    if (!request) return "";
    std::string text = reply_text(*request, std::get<void*>(call.arguments[2]));
    const void* data = std::get<void*>(call.arguments[1]);
    if (request->returned && data) add_item(text, request->returned(data));
    return text;
}

}  // namespace

bool answers_with_matrix(const char* service) {
    return is_one_of(service, {"_api__container_get_transformation_matrix", "_api__container_get_inverse_matrix",
                               "_api__get_camera_view_matrix"});
}

std::string call_text(const char* name, std::span<const CallValue> arguments) {
    return fmt::format("{}({})", name, arguments_text(name, arguments));
}

std::string entry_text(const Stage& stage, const RunningCall& call) {
    const Container* container = find_container(stage, call.container_handle);
    std::string text = quoted(container ? container->name : "");
    if (std::string_view(call.entry_point) == "PLUGIN_DISPATCHER_CALLBACK")
        add_item(text, code_text(std::get<int32_t>(call.arguments[0])));
    else if (!call.arguments.empty())
        add_item(text, arguments_text(call.entry_point, call.arguments));
    return fmt::format("{}({})", call.entry_point, text);
}

std::vector<std::string> end_texts(const RunningCall& call, const FieldTable& table) {
    std::vector<std::string> texts;
    if (std::string_view(call.entry_point) == "PLUGIN_NEW_GEOM" && !table.block.empty())
        texts.push_back(fmt::format("state {:016x}", state_digest(*call.instance, table)));
    if (const std::string answer = entry_answer(call); !answer.empty()) texts.push_back("-> " + answer);
    return texts;
}

bool is_reentry(const Stage& stage, const RunningCall& call) {
    return std::count_if(stage.running.begin(), stage.running.end(),
                         [&](const RunningCall& one) { return one.instance == call.instance; }) > 1;
}

std::vector<std::string> registration_texts(const Plugin& plugin) {
    std::vector<std::string> texts;
    for (const Call& call : plugin.registration_calls) {
        std::string list;
        for (const CallArgument& argument : call.arguments)
            if (call.name != "pelRegisterTotalSize") add_item(list, registered_text(argument));
        if (call.name == "pelRegisterParameterRadio")
            if (const ParameterInfo* parameter = find_parameter(plugin, std::get<std::string>(call.arguments[0])))
                for (const std::string& choice : parameter->choices) add_item(list, quoted(choice));
        texts.push_back(fmt::format("{}({})", call.name, list));
    }
    return texts;
}

}  // namespace stage
