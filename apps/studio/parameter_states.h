// A container's parameters as a panel shows them: grouped, with their values, and what one needs to have an effect.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "parameter_needs.h"
#include "scene_facts.h"

namespace tovu {

struct ParameterState {
    const stage::ParameterInfo* info;
    const stage::ParameterNotes* notes;  // null for none
    stage::ParameterValue value;         // of a Radio the choice's text
    bool is_written = false;             // the document gives it
    Needs needs;                         // before it has an effect
};

struct ParameterStates {
    std::string name;  // of the group; empty for parameters of none
    std::vector<ParameterState> parameters;
};

/// container: carries a plug-in. written: what the document gives to it; it holds before the facts, which are those of
/// the scene that was built last.
std::vector<ParameterStates> parameter_states(const SceneFacts& facts, const ContainerFacts& container,
                                              const std::map<std::string, stage::ParameterValue>& written);

/// Whether a search text occurs in a text; upper and lower case count alike. An empty one does.
bool has_words(const std::string& text, const std::string& search);

/// Whether a search text occurs in the name, the label or the sentences, as has_words.
bool matches_search(const ParameterState& parameter, const std::string& search);

/// What the parameter needs before it has an effect: "No effect now, needs: Spawn Type Sphere." Empty when it has one.
std::string needs_text(const ParameterState& parameter);

/// The sentence, what it needs, range and default, what else the notes say and its name, a line each. Parameters have
/// their labels in it.
std::string help_text(const ParameterState& parameter, const stage::Plugin& plugin);

/// The unit as it stands behind a number, with a space where it belongs: " %", "°", " units/s". Empty for one that
/// begins with a number.
std::string short_unit(const ParameterState& parameter);

}  // namespace tovu
