// Colours, type and distances of the studio.
#pragma once

#include <imgui.h>

#include "stage/result.h"

namespace tovu {

// What panels use beyond the colours of ImGui's style.
inline constexpr ImU32 kAccent = IM_COL32(108, 178, 242, 255);
inline constexpr ImU32 kAccentSoft = IM_COL32(53, 96, 140, 255);
inline constexpr ImU32 kWarning = IM_COL32(242, 184, 75, 255);
inline constexpr ImU32 kMistake = IM_COL32(240, 122, 106, 255);
inline constexpr ImU32 kDim = IM_COL32(138, 147, 161, 255);
inline constexpr ImU32 kWell = IM_COL32(18, 20, 25, 255);  // behind pictures and graphs
inline constexpr ImU32 kLine = IM_COL32(52, 59, 70, 255);
inline constexpr ImU32 kGuide = IM_COL32(255, 255, 255, 110);  // over the picture

/// Sets ImGui's style for text of a size in pixels and loads its types; the font texture must be made anew.
/// Error: a font file is missing.
stage::Result<stage::Done> apply_theme(float text_pixels);

/// The larger, bold type of headings, once apply_theme has loaded it; else the type of all text.
ImFont* heading_font();

}  // namespace tovu
