// Colours, fonts and spacing of the studio.
#pragma once

#include <imgui.h>

#include "stage/result.h"

namespace tovu {

// Colours of panels that are not in ImGui's style.
inline constexpr ImU32 kAccent = IM_COL32(108, 178, 242, 255);
inline constexpr ImU32 kAccentSoft = IM_COL32(53, 96, 140, 255);
inline constexpr ImU32 kWarning = IM_COL32(242, 184, 75, 255);
inline constexpr ImU32 kMistake = IM_COL32(240, 122, 106, 255);
inline constexpr ImU32 kDim = IM_COL32(138, 147, 161, 255);
inline constexpr ImU32 kWell = IM_COL32(18, 20, 25, 255);  // behind pictures and graphs
inline constexpr ImU32 kLine = IM_COL32(52, 59, 70, 255);
inline constexpr ImU32 kGuide = IM_COL32(255, 255, 255, 110);  // over the picture

/// Sets ImGui's style for a font size in pixels and loads the fonts. The caller must create the font texture again.
/// Error: a font file is missing.
stage::Result<stage::Done> apply_theme(float text_pixels);

/// The larger, bold font of headings; before apply_theme, ImGui's default font.
ImFont* heading_font();

}  // namespace tovu
