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

/// Whether the runs `one` and `other` agree. Where they do not, a finding of `check` tells the first difference. Where
/// another run of `one` differs from it as well, a note says that runs are not compared.
/// when: what was done to the other one.
bool expect_equal(const char* check, const std::vector<TraceLine>& one, const std::vector<TraceLine>& other,
                  const std::function<std::vector<TraceLine>()>& one_again, const std::string& when,
                  const std::string& right);

}  // namespace tovu::validate
