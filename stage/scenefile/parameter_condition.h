// When a parameter's value has an effect, as the plug-in's notes say it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "stage/plugins/plugin.h"
#include "stage/stage_export.h"

namespace stage {

/// A condition on one parameter: it is `set`, or is one of `values`.
struct ValueTest {
    std::string parameter;
    bool set = false;                    // a number that is not 0, a text that is not empty
    std::vector<ParameterValue> values;  // of a Radio texts
};

/// Holds while all tests do.
struct Condition {
    std::vector<ValueTest> tests;
    bool attached = false;  // another plug-in works on the instance
};

/// One of them must hold; none: always.
using Conditions = std::vector<Condition>;

/// "spawn_type is Cube or Sphere; or use_wind_image is on and wind_force is not 0". Empty for no conditions.
STAGE_EXPORT std::string to_string(const Conditions& conditions, const Plugin& plugin);

}  // namespace stage
