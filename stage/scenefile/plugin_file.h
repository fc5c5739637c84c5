// Finds the library of a plug-in by its name.
#pragma once

#include <filesystem>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// `smoke_plugin` for "smoke" and the empty name. A plain name (no dot, no slash) is the library NAME.so in the same
/// folder. Any other name is a library file, relative to `folder`. Error: there is no library of a plain name; the
/// message lists or suggests those that exist.
STAGE_EXPORT Result<std::string> find_plugin_file(const std::string& name, const std::string& smoke_plugin,
                                                  const std::filesystem::path& folder);

}  // namespace stage
