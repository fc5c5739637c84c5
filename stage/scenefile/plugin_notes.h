// What a plug-in's author says about its parameters beyond their registration: a TOML file beside the library.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>

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

struct ParameterNotes {
    std::optional<CurveFormat> curve;          // of a String
    std::map<std::string, std::string> needs;  // of a Radio: by choice, the parameter that must not be empty then
};

/// By the parameter's name; parameters without notes are left out.
using PluginNotes = std::map<std::string, ParameterNotes>;

/// Reads NAME.toml in the folder of the plug-in's library, NAME being the registered name. No file: no notes.
/// Error, a line for each mistake: "file:line:column: …" for what is not TOML, unknown keys, wrong values, and
/// parameters and choices that the plug-in does not have.
STAGE_EXPORT Result<PluginNotes> read_plugin_notes(const Plugin& plugin);

}  // namespace stage
