// Writes profiling sections as a trace for Chrome's and Perfetto's viewers.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "stage/result.h"
#include "stage/scene/profile.h"
#include "stage/stage_export.h"

namespace stage {

struct TraceSection {
    std::string name;
    std::string container;
    double start_seconds = 0.0;  // since a time that all sections share
    double duration_seconds = 0.0;
};

/// Copies the texts of a span.
STAGE_EXPORT TraceSection trace_section(const TraceSpan& span);

/// Writes the JSON trace event format: each section as a complete event ("ph":"X"), times in microseconds.
STAGE_EXPORT Result<Done> write_trace(const std::filesystem::path& path, std::span<const TraceSection> sections);

}  // namespace stage
