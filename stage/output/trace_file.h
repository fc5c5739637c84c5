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
    double start_seconds = 0.0;  // since a moment common to all sections
    double duration_seconds = 0.0;
};

/// A span with texts of its own.
STAGE_EXPORT TraceSection trace_section(const TraceSpan& span);

/// Writes the JSON trace event format: each section as a complete event ("ph":"X"), times in microseconds.
STAGE_EXPORT Result<Done> write_trace(const std::filesystem::path& path, std::span<const TraceSection> sections);

}  // namespace stage
