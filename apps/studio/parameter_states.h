// A container's parameters as a panel shows them: grouped, with their values, and why one has no effect.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "scene_facts.h"

namespace tovu {

struct ParameterState {
    const stage::ParameterInfo* info;
    const stage::ParameterNotes* notes;  // null for none
    stage::ParameterValue value;         // of a Radio the choice's text
    bool is_written = false;             // the document gives it
    std::string idle_reason;             // why it has no effect now; empty: it has
};

struct ParameterStates {
    std::string name;  // of the group; empty for parameters of none
    std::vector<ParameterState> parameters;
};

/// container: carries a plug-in. written: what the document gives to it; it holds before the facts, which are those of
/// the scene that was built last.
std::vector<ParameterStates> parameter_states(const SceneFacts& facts, const ContainerFacts& container,
                                              const std::map<std::string, stage::ParameterValue>& written);

/// Whether a search text occurs in the name, the label or the sentence; upper and lower case count alike.
bool matches_search(const ParameterState& parameter, const std::string& search);

/// The sentence, what else the notes say, range and default: for a help text.
std::string help_text(const ParameterState& parameter);

/// The unit as it stands behind a number: " %", "°", or empty for a long one.
std::string short_unit(const ParameterState& parameter);

}  // namespace tovu
