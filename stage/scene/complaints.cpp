#include "complaints.h"

#include <fmt/format.h>

#include <algorithm>

#include "stage.h"

namespace stage {
namespace {

std::string caller_of(const Stage& stage) {
    if (stage.running.empty()) return "";
    const RunningCall& call = stage.running.back();
    return describe_call(stage, call.entry_point, call.plugin_name, call.container_handle);
}

}  // namespace

std::string describe_call(const Stage& stage, std::string_view entry_point, std::string_view plugin_name,
                          int32_t container_handle) {
    const Container* container = find_container(stage, container_handle);
    return fmt::format("{} of {} in '{}'", entry_point, plugin_name, container ? container->name : "");
}

void complain(Stage& stage, std::string call, std::string message) {
    Complaint complaint{std::move(call), caller_of(stage), std::move(message), 1};
    if (stage.complaints.sink) stage.complaints.sink(complaint);
    std::vector<Complaint>& list = stage.complaints.list;
    const auto same = std::find_if(list.begin(), list.end(), [&](const Complaint& other) {
        return other.call == complaint.call && other.caller == complaint.caller && other.message == complaint.message;
    });
    if (same != list.end())
        ++same->times;
    else if (list.size() < kMaxComplaints)
        list.push_back(std::move(complaint));
    else
        ++stage.complaints.dropped;
}

std::string to_string(const Complaint& complaint) {
    std::string text = complaint.call;
    if (!complaint.caller.empty()) text += ", called by " + complaint.caller;
    text += ": " + complaint.message;
    if (complaint.times > 1) text += fmt::format(" ({} times)", complaint.times);
    return text;
}

}  // namespace stage
