// Profiling: sections of work that plug-ins begin and end with an event's handle, and their durations.
#pragma once

#include <chrono>
#include <functional>
#include <string_view>
#include <vector>

namespace stage {

struct ProfilingEvent;

/// A completed section or entry point. Times are of the steady clock since the creation of the Stage.
struct TraceSpan {
    std::string_view event;      // the event's name; for an entry point its exported name
    std::string_view container;  // the instance's container; both texts are valid only during the sink's call
    double start_seconds;
    double duration_seconds;
};

struct Profile {
    using TimePoint = std::chrono::steady_clock::time_point;
    struct OpenSection {
        const ProfilingEvent* event;
        TimePoint start;
    };

    std::vector<OpenSection> open;  // outermost first
    TimePoint origin = std::chrono::steady_clock::now();

    /// If set, called at the end of every section and of every entry point of an instance. Must not call the Stage.
    std::function<void(const TraceSpan&)> sink;
};

}  // namespace stage
