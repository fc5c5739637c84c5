// Traces of the calls of a plug-in, and their comparison.
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

/// Runs `scenario` in a child process and returns the calls of services and OpenGL that the instance in `container`
/// makes. If the plug-in ends the child process, this process ends too.
std::vector<TraceLine> trace_of(const std::function<void()>& scenario, const std::function<int32_t()>& container);

/// True if the runs `one` and `other` are equal. Otherwise reports the first difference as a finding of `check`; if a
/// repetition of `one` differs too, reports a note instead, since the runs cannot be compared.
/// when: how `other` differs from `one`.
bool expect_equal(const char* check, const std::vector<TraceLine>& one, const std::vector<TraceLine>& other,
                  const std::function<std::vector<TraceLine>()>& one_again, const std::string& when,
                  const std::string& right);

}  // namespace tovu::validate
