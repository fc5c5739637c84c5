// What a plug-in's author says about its parameters beyond their registration: a TOML file beside the library.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "curve_format.h"
#include "parameter_condition.h"
#include "scene_description.h"
#include "stage/plugins/plugin.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// How an outline is read from the container that a parameter names: the parameters for it.
struct OutlineNotes {
    std::string plane;        // Radio: a choice names the two axes, such as "XZ"
    std::string coordinates;  // Radio: the choice "World" places the outline as its container is
};

/// The curve as the plug-in made it: pressing a button writes its samples into a parameter, in the form of the curve.
struct SampleNotes {
    std::string press;  // the button
    std::string text;   // String
};

using ParameterPair = std::array<std::string, 2>;

/// One parameter in pictures that differ in its value alone.
struct PictureNotes {
    std::string scene;                   // its name, without folder and extension
    std::vector<ParameterValue> values;  // a picture for each
    std::vector<ParameterSetting> with;  // other parameters
};

/// Roles in the rules of lint: life in seconds and its spread in percent; the share of life that is left in percent;
/// nothing is born while it is on; half sizes of a particle; a curve of opacity. "aid" is for the studio: draws an aid
/// for the designer while it is on.
inline const std::vector<std::string> kRoles = {"life",       "life_spread", "life_kept", "frozen",
                                                "half_width", "half_height", "opacity",   "aid"};

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
    std::string role;                     // what it is for the rules of lint, as kRoles lists them; else empty
    bool idle = false;                    // nothing reads the value
    std::vector<ParameterPair> binds;     // of a lock: what a panel keeps alike, and the plug-in does not
    std::vector<std::string> scaled;      // of a Radio: choices that let the container's scale enter other values
    Conditions doubles;                   // the value counts double while one of these holds; none: never
    std::vector<ParameterPair> covers;    // of an Image: width and height in units; the first pair that is not 0 counts
    std::optional<OutlineNotes> outline;  // of a Container
    std::optional<CurveFormat> curve;     // of a String
    std::optional<SampleNotes> sampled;   // of a curve
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
