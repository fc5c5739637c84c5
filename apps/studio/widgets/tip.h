// A short text about the item under the pointer. Depends on ImGui only.
#pragma once

#include <string>

namespace widgets {

/// Shows a text about the item that ImGui drew last, also a disabled one, after the pointer has rested on it for half a
/// second without a pressed button. The text is below the item, or above it if there is no room below, so that it does
/// not cover the item and its neighbours.
void tip(const std::string& text);

}  // namespace widgets
