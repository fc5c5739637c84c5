// What a container has beside its plug-in's parameters: texture, blend, place in the scene.
#pragma once

#include "panels.h"

namespace tovu {

/// A group of lines for the container of this name, those that match the search in the panel. Returns whether there
/// are any.
bool show_container_keys(PanelFrame& frame, const std::string& container);

}  // namespace tovu
