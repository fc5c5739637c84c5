// Notes on a plug-in: a TOML file beside the library that describes its parameters beyond their registration.
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

/// The parameters that control how an outline is read from the container that another parameter names.
struct OutlineNotes {
    std::string plane;        // Radio: a choice names the two axes, such as "XZ"
    std::string coordinates;  // Radio: with the choice "World" the outline has the placement of its container
};

/// Access to the samples of a curve: pressing a button writes them into a parameter, in the format of the curve.
struct SampleNotes {
    std::string press;  // the button
    std::string text;   // String
};

using ParameterPair = std::array<std::string, 2>;

/// Pictures of a scene that differ only in the value of one parameter.
struct PictureNotes {
    std::string scene;                   // its name, without folder and extension
    std::vector<ParameterValue> values;  // a picture for each
    std::vector<ParameterSetting> with;  // other parameters
};

/// Roles of parameters, used by lint: life in seconds and its spread in percent; the remaining share of life in
/// percent; a switch that stops births; half sizes of a particle; a curve of opacity. "aid", used by the studio, is a
/// switch that draws an aid for the designer.
inline const std::vector<std::string> kRoles = {"life",       "life_spread", "life_kept", "frozen",
                                                "half_width", "half_height", "opacity",   "aid"};

struct ParameterNotes {
    std::string name;                  // as registered
    std::string group;                 // one of the plug-in's groups
    std::string sentence;              // what the parameter does
    std::string more;                  // further sentences
    std::string unit;                  // of the value
    std::string per;                   // "second" or "frame": the period after which the value acts again; or empty
    std::string conversion;            // kind of conversion to another frame rate; empty: none
    bool at_birth = false;             // a change affects new particles only
    std::vector<Condition> acts_when;  // the value has an effect if one of these holds; empty: always
    std::map<std::string, std::string> needs;  // by choice or "true": another parameter, which must not be empty then
    std::optional<ParameterValue> typical;     // to begin with, where the default has no effect
    std::optional<PictureNotes> picture;
    std::string role;                   // one of kRoles, or empty
    bool idle = false;                  // the plug-in does not use the value
    std::vector<ParameterPair> binds;   // for a lock: parameters that a user interface keeps equal, not the plug-in
    std::vector<std::string> scaled;    // for a Radio: choices with which the container's scale affects other values
    Conditions doubles;                 // the value has twice its effect if one of these holds; empty: never
    std::vector<ParameterPair> covers;  // for an Image: width and height in units; the first pair other than 0 is used
    std::optional<OutlineNotes> outline;  // for a Container
    std::optional<CurveFormat> curve;     // for a String
    std::optional<SampleNotes> sampled;   // for a curve
};

/// The parameters of births. The plug-in accumulates time and has a birth for each 1 / rate seconds. Births without a
/// free record are lost.
struct BirthNotes {
    std::string rate;    // a Float: births per second
    std::string number;  // an Int: size of the pool
};

struct PluginNotes {
    std::vector<std::string> groups;         // in display order
    std::vector<std::string> facts;          // sentences about several parameters
    std::vector<ParameterNotes> parameters;  // in the order of the file
    std::optional<BirthNotes> births;        // for a plug-in that answers 'RAD1'
};

/// Null for a parameter without notes.
STAGE_EXPORT const ParameterNotes* find_notes(const PluginNotes& notes, const std::string& parameter);

/// Reads NAME.toml in the folder of the plug-in's library, where NAME is the registered name. Empty notes if there is
/// no file. Error: a line "file:line:column: …" for each mistake, such as invalid TOML, unknown keys, wrong values, and
/// groups, parameters and choices that the plug-in does not have.
STAGE_EXPORT Result<PluginNotes> read_plugin_notes(const Plugin& plugin);

}  // namespace stage
