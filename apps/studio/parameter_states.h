// A container's parameters as the panel shows them: groups, values, and the changes that a parameter needs to have an
// effect.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "parameter_needs.h"
#include "scene_facts.h"

namespace tovu {

struct ParameterState {
    const stage::ParameterInfo* info;
    const stage::ParameterNotes* notes;  // null if the plug-in has no notes about the parameter
    stage::ParameterValue value;         // for a Radio, the text of the choice
    bool is_written = false;             // the document sets the value
    Needs needs;                         // changes that give it an effect
};

struct ParameterStates {
    std::string name;  // of the group; empty for parameters without a group
    std::vector<ParameterState> parameters;
};

/// container: must have a plug-in. written: the values that the document sets; they take precedence over the facts,
/// which describe the scene that was built last.
std::vector<ParameterStates> parameter_states(const SceneFacts& facts, const ContainerFacts& container,
                                              const std::map<std::string, stage::ParameterValue>& written);

/// True if the text contains the search text. Ignores case. Every text contains the empty search text.
bool has_words(const std::string& text, const std::string& search);

/// Whether the name, the label or the sentences of a parameter contain a search text, as has_words.
bool matches_search(const ParameterState& parameter, const std::string& search);

/// The needs as a sentence: "No effect now, needs: Spawn Type Sphere." Empty if the parameter has an effect.
std::string needs_text(const ParameterState& parameter);

/// The help for a parameter, one line for each: its sentence, its needs, range and default, other notes, its name. The
/// text uses labels for parameter names.
std::string help_text(const ParameterState& parameter, const stage::Plugin& plugin);

/// The unit to append to a number, with a leading space if needed: " %", "°", " units/s". Empty if the unit begins with
/// a digit.
std::string short_unit(const ParameterState& parameter);

}  // namespace tovu
