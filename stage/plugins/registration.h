// What a plug-in registers while PLUGIN_INIT runs, collected and checked.
#pragma once

#include <string>
#include <vector>

#include "plugin.h"

namespace stage {

struct Registration {
    Plugin plugin;
    int names_given = 0;
    int types_given = 0;
    int sizes_given = 0;
    std::vector<std::string> problems;  // against the contract, a sentence each
};

/// The registration of the PLUGIN_INIT that is running, or null.
Registration* running_registration();
void set_running_registration(Registration* registration);

/// Adds a parameter after those before it. Contradictions in it become problems.
void add_parameter(Registration& registration, ParameterInfo parameter);

/// Adds a profiling event under a handle that no other event of the process has; returns the handle.
int32_t add_event(Registration& registration, std::string name, int32_t flags);

/// All problems: those found during PLUGIN_INIT, and what is missing or contradictory at its end.
std::vector<std::string> find_problems(const Registration& registration);

}  // namespace stage
