// Lists of known names.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "stage/stage_export.h"

namespace stage {

inline bool contains(const std::vector<std::string>& names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

/// The end of a message about an unknown name: "did you mean 'a'?" with the nearest known name, or "known are: a, b, c"
/// (at most twelve) if none is near, or "there are none here".
STAGE_EXPORT std::string name_hint(std::string_view name, const std::vector<std::string>& known);

}  // namespace stage
