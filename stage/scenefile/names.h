// Help for a name that is not known: the nearest one that is.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "stage/stage_export.h"

namespace stage {

/// What to say after "unknown x": "did you mean 'a'?", or "known are: a, b, c" where nothing is near (at most twelve).
STAGE_EXPORT std::string name_hint(std::string_view name, const std::vector<std::string>& known);

}  // namespace stage
