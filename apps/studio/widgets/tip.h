// A short text about the item under the pointer. ImGui only.
#pragma once

#include <string>

namespace widgets {

/// Shows a text about the item that ImGui was told last, also a disabled one, once the pointer has rested on it for
/// half a second with no button held. The text is below the item, or above where there is no room below: it leaves the
/// item and its neighbours in sight.
void tip(const std::string& text);

}  // namespace widgets
