// Sections of work that plug-ins bracket with profiling events, and how long they took.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace stage {

struct EventTotals {
    std::string name;    // as registered
    int64_t count = 0;   // sections that ended
    double seconds = 0;  // in all of them
};

/// One section that ended. Times are of the steady clock, from the making of the Stage.
struct TraceSpan {
    std::string_view event;      // the event's name; for an entry point its exported name
    std::string_view container;  // the instance's container; valid during the call only, as is `event`
    double start_seconds;
    double duration_seconds;
};

struct Profile {
    using TimePoint = std::chrono::steady_clock::time_point;
    struct OpenSection {
        int32_t event;
        TimePoint start;
    };

    std::map<int32_t, EventTotals> totals;  // by event handle
    std::vector<OpenSection> open;          // outermost first
    TimePoint origin = std::chrono::steady_clock::now();

    /// Where set, called at the end of every section and of every entry point of an instance. Must not call back into
    /// the Stage.
    std::function<void(const TraceSpan&)> sink;
};

}  // namespace stage
