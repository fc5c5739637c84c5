// Which library a plug-in's name stands for.
#pragma once

#include <filesystem>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// "smoke" and the empty name: `smoke_plugin`. A plain name (no dot, no slash): the library NAME.so beside it. Any
/// other name: a library file, relative to `folder`. Error: there is no library of a plain name; the message lists or
/// suggests those that exist.
STAGE_EXPORT Result<std::string> find_plugin_file(const std::string& name, const std::string& smoke_plugin,
                                                  const std::filesystem::path& folder);

}  // namespace stage
