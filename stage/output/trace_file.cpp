#include "stage/output/trace_file.h"

#include <fmt/format.h>

#include "stage/output/whole_file.h"

namespace stage {
namespace {

/// As JSON asks for: quotes, backslashes and control characters escaped; other bytes are UTF-8 as they are.
std::string json_text(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            quoted += {'\\', c};
        else if (static_cast<unsigned char>(c) < 0x20)
            quoted += fmt::format("\\u{:04x}", static_cast<unsigned char>(c));
        else
            quoted += c;
    }
    return quoted + '"';
}

constexpr double kMicrosecondsPerSecond = 1e6;

}  // namespace

std::string trace_json(std::span<const TraceSection> sections) {
    std::string json = "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[";
    const char* separator = "\n";
    for (const TraceSection& section : sections) {
        json += fmt::format(
            "{}{{\"name\":{},\"ph\":\"X\",\"ts\":{:.3f},\"dur\":{:.3f},\"pid\":1,\"tid\":1,\"args\":{{\"container\":{}}"
            "}}}",
            separator, json_text(section.name), section.start_seconds * kMicrosecondsPerSecond,
            section.duration_seconds * kMicrosecondsPerSecond, json_text(section.container));
        separator = ",\n";
    }
    return json + "\n]}\n";
}

Result<Done> write_trace(const std::filesystem::path& path, std::span<const TraceSection> sections) {
    return write_whole_file(path, trace_json(sections));
}

}  // namespace stage
