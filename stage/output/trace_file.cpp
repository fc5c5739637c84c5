#include "trace_file.h"

#include <nlohmann/json.hpp>

#include "whole_file.h"

namespace stage {
namespace {

constexpr double kMicrosecondsPerSecond = 1e6;

}  // namespace

TraceSection trace_section(const TraceSpan& span) {
    return {std::string(span.event), std::string(span.container), span.start_seconds, span.duration_seconds};
}

Result<Done> write_trace(const std::filesystem::path& path, std::span<const TraceSection> sections) {
    using Json = nlohmann::ordered_json;
    Json events = Json::array();
    for (const TraceSection& section : sections)
        events.push_back({{"name", section.name},
                          {"ph", "X"},
                          {"ts", section.start_seconds * kMicrosecondsPerSecond},
                          {"dur", section.duration_seconds * kMicrosecondsPerSecond},
                          {"pid", 1},
                          {"tid", 1},
                          {"args", {{"container", section.container}}}});
    const Json trace = {{"displayTimeUnit", "ms"}, {"traceEvents", std::move(events)}};
    // Names come from plug-ins: bytes that are not UTF-8 become U+FFFD.
    return write_whole_file(path, trace.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace stage
