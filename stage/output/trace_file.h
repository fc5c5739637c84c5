// Profiling sections as a trace that Chrome's and Perfetto's viewers open.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct TraceSection {
    std::string name;
    std::string container;
    double start_seconds = 0.0;  // since any common moment
    double duration_seconds = 0.0;
};

/// The sections in the JSON trace event format, as complete events ("ph":"X"), times in microseconds.
STAGE_EXPORT std::string trace_json(std::span<const TraceSection> sections);

STAGE_EXPORT Result<Done> write_trace(const std::filesystem::path& path, std::span<const TraceSection> sections);

}  // namespace stage
