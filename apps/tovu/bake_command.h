// `tovu bake`: wind images, and titles that erode into smoke. A Python script makes them.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

/// Replaces this program by the script looks/make/bake.py, with Debian's Python, which has the packages that it needs.
/// arguments: the script's own. Returns only when Python or the script cannot be started.
stage::Error run_bake_script(std::vector<std::string> arguments);

}  // namespace tovu
