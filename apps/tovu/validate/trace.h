// What a plug-in tells the host, call by call, for comparing runs.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "rig.h"

namespace tovu::validate {

/// One call of the plug-in to the host.
struct TraceLine {
    std::string where;  // "PLUGIN_NEW_GEOM, frame 3"
    std::string call;   // "glVertex3f(1, 2, 3)"
};

/// Runs `scenario` in a process of its own and returns what was called inside entry points of the instance that
/// `container` carries, services and OpenGL alike. The process ends with this one where the plug-in ends it.
std::vector<TraceLine> trace_of(const std::function<void()>& scenario, const std::function<int32_t()>& container);

/// Where two runs differ first, as a sentence; empty where they do not.
struct Difference {
    std::string where;
    std::string message;
};
Difference first_difference(const std::vector<TraceLine>& one, const std::vector<TraceLine>& other);

}  // namespace tovu::validate
