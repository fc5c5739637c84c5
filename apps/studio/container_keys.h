// Lines for the container's own keys: texture, blend, position and so on.
#pragma once

#include "panels.h"

namespace tovu {

/// Shows a group of lines for the keys of the named container that match the panel's search. Returns whether any key
/// matches.
bool show_container_keys(PanelFrame& frame, const std::string& container);

}  // namespace tovu
