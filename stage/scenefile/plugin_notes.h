// What a plug-in's author says about its parameters beyond their registration: a TOML file beside the library.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "parameter_condition.h"
#include "scene_description.h"
#include "stage/plugins/plugin.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// The text is a curve: two points or more, each a position and `components` numbers, separated by single spaces. The
/// positions ascend. Positions and numbers lie in `range`.
struct CurveFormat {
    int32_t components = 1;
    std::array<float, 2> range = {0.0f, 1.0f};  // smallest and largest number
    bool steps = false;                         // two points may have one position
};

/// One parameter in pictures that differ in its value alone.
struct PictureNotes {
    std::string scene;                   // its name, without folder and extension
    std::vector<ParameterValue> values;  // a picture for each
    std::vector<ParameterSetting> with;  // other parameters
};

struct ParameterNotes {
    std::string name;                          // as registered
    std::string group;                         // one of the plug-in's groups
    std::string sentence;                      // what the parameter does
    std::string more;                          // further sentences
    std::string unit;                          // of the value
    std::string per;                           // "second", "frame": the value acts anew in each; else empty
    std::string conversion;                    // how the value changes with the frame rate; empty: it does not
    bool at_birth = false;                     // a change reaches new particles only
    std::vector<Condition> acts_when;          // the value has an effect while one of these holds; none: always
    std::map<std::string, std::string> needs;  // by choice, or "true": the parameter that must not be empty then
    std::optional<PictureNotes> picture;
    std::optional<CurveFormat> curve;  // of a String
};

/// The parameters that births depend on. Time is saved up, and at 1 / rate seconds each it is spent on births; those
/// that find no free record are lost.
struct BirthNotes {
    std::string rate;    // a Float: births per second
    std::string number;  // an Int: how many particles can be alive
};

struct PluginNotes {
    std::vector<std::string> groups;         // in the order to show them
    std::vector<std::string> facts;          // about several parameters at once
    std::vector<ParameterNotes> parameters;  // in the order of the file
    std::optional<BirthNotes> births;        // of a plug-in that answers 'RAD1'
};

/// Null for a parameter without notes.
STAGE_EXPORT const ParameterNotes* find_notes(const PluginNotes& notes, const std::string& parameter);

/// Reads NAME.toml in the folder of the plug-in's library, NAME being the registered name. No file: no notes.
/// Error, a line for each mistake: "file:line:column: …" for what is not TOML, unknown keys, wrong values, and
/// groups, parameters and choices that the plug-in does not have.
STAGE_EXPORT Result<PluginNotes> read_plugin_notes(const Plugin& plugin);

}  // namespace stage
