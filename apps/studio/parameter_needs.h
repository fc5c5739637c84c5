// The changes that a parameter needs before it has an effect, from the plug-in's notes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "../tovu/parameter_reference.h"

namespace tovu {

using IndexedValues =
    std::vector<stage::ParameterValue>;  // by index of the parameter; for a Radio, the text of the choice

struct Need {
    const stage::ParameterInfo* info = nullptr;  // parameter to change; null: needs another plug-in on the particles
    std::optional<stage::ParameterValue> value;  // a sufficient value; none: the designer has to choose
    std::string words;                           // "Use Wind Image on", "Wind Force not 0", "Spawn Container chosen"
};

struct Needs {
    bool is_idle = false;    // the value has no effect now
    std::vector<Need> list;  // changes that give it an effect; empty if none is needed or none is known
};

/// Collects the needs of a parameter. Of several conditions in the notes, takes the one that needs the fewest changes.
/// The list includes the needs of needed parameters. attached: another plug-in works on the particles.
Needs needs_of(const stage::ParameterInfo& info, const NotedPlugin& noted, IndexedValues values, bool attached);

}  // namespace tovu
