// What must change before a parameter has an effect, as the plug-in's notes tell it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "../tovu/parameter_reference.h"

namespace tovu {

using IndexedValues = std::vector<stage::ParameterValue>;  // by index of the parameter; of a Radio the choice's text

struct Need {
    const stage::ParameterInfo* info = nullptr;  // what must change; null: another plug-in must work on the particles
    std::optional<stage::ParameterValue> value;  // that would do; none: the designer has to choose
    std::string words;                           // "Use Wind Image on", "Wind Force not 0", "Spawn Container chosen"
};

struct Needs {
    bool is_idle = false;    // the value has no effect now
    std::vector<Need> list;  // empty: there is none, or nothing can give it one
};

/// Of the conditions that the notes list, the one that lacks least counts. What a needed parameter needs in turn is in
/// the list too. attached: another plug-in works on the particles.
Needs needs_of(const stage::ParameterInfo& info, const NotedPlugin& noted, IndexedValues values, bool attached);

}  // namespace tovu
