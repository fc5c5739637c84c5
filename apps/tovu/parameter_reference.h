// A plug-in's parameters as texts: what it registers, and what its notes say.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "stage/plugins/plugin.h"
#include "stage/result.h"
#include "stage/scene/stage.h"
#include "stage/scenefile/plugin_notes.h"

namespace tovu {

struct NotedPlugin {
    const stage::Plugin& plugin;
    stage::PluginNotes notes;
};

/// Loads a plug-in, named as in a scene; empty means the smoke. Errors: the library does not exist; its notes are
/// wrong.
stage::Result<NotedPlugin> load_noted_plugin(stage::Stage& host, const std::string& name);

struct ParameterGroup {
    std::string name;  // empty for parameters without a group
    std::vector<const stage::ParameterInfo*> parameters;
};

/// The groups that have parameters, in the order of the notes. Parameters are in the order of the notes too; those
/// without notes come last.
std::vector<ParameterGroup> grouped_parameters(const NotedPlugin& noted);

/// "30", "true", "\"Cube\""
std::string value_text(const stage::ParameterValue& value);

/// "0 to 25000", "\"Local\", \"World\"", "at most 4096 bytes", "true, false"
std::string values_text(const stage::ParameterInfo& parameter);

/// The facts of a parameter as pairs of name and text, such as {"unit", "degrees"}.
std::vector<std::pair<std::string, std::string>> parameter_facts(const NotedPlugin& noted,
                                                                 const stage::ParameterInfo& parameter);

}  // namespace tovu
