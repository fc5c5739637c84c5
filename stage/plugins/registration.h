// Collects and checks the registration of a plug-in during PLUGIN_INIT.
#pragma once

#include <string>
#include <vector>

#include "plugin.h"

namespace stage {

/// A text argument that is a null pointer, which is read as an empty text.
struct NullText {
    size_t call;      // position in Plugin::registration_calls
    size_t argument;  // 0 for the first
};

struct Registration {
    Plugin plugin;
    int names_given = 0;
    int types_given = 0;
    int sizes_given = 0;
    int32_t init_returned = 0;
    std::vector<NullText> null_texts;
    std::vector<std::string> problems;  // against the contract, a sentence each
};

/// Loads a library, calls its PLUGIN_INIT and returns the registration with all problems. The plug-in is not added to
/// loaded_plugins(); its library stays loaded. Errors: no library, an entry point missing.
STAGE_EXPORT Result<Registration> try_plugin(Stage& stage, const std::string& path);

/// The registration of the running PLUGIN_INIT, or null.
Registration* running_registration();
void set_running_registration(Registration* registration);

/// Appends a parameter. Contradictions in it become problems.
void add_parameter(Registration& registration, ParameterInfo parameter);

/// Adds a profiling event under a handle that no other event of the process has; returns the handle.
int32_t add_event(Registration& registration, std::string name, int32_t flags);

/// All problems: those found during PLUGIN_INIT, and missing or contradictory registrations at its end.
std::vector<std::string> find_problems(const Registration& registration);

}  // namespace stage
