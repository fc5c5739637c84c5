// Conditions under which a parameter has an effect, from the notes of a plug-in.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "stage/plugins/plugin.h"
#include "stage/stage_export.h"

namespace stage {

/// A test of one parameter: it is set, or is one of `values`.
struct ValueTest {
    std::string parameter;
    bool set = false;                    // test for a number other than 0 or a text that is not empty
    std::vector<ParameterValue> values;  // choices of a Radio are texts
};

/// Holds if all tests hold.
struct Condition {
    std::vector<ValueTest> tests;
    bool attached = false;  // also requires that another plug-in is attached to the instance
};

/// At least one must hold. An empty list always holds.
using Conditions = std::vector<Condition>;

/// "spawn_type is Cube or Sphere; or use_wind_image is on and wind_force is not 0". Empty for no conditions.
STAGE_EXPORT std::string to_string(const Conditions& conditions, const Plugin& plugin);

}  // namespace stage
