// An editor for a curve with draggable points. Depends on ImGui only.
#pragma once

#include <imgui.h>

#include <span>
#include <vector>

namespace widgets {

struct CurvePoint {
    double x = 0.0;
    double y = 0.0;
};

/// The limits of the points.
struct CurveLimits {
    double low = 0.0;    // smallest x and y
    double high = 1.0;   // largest x and y
    bool steps = false;  // two points may have the same x
    size_t min_points = 2;
};

/// Draws the points over the curve, `sampled` at ascending x, and over `histogram`, whose bars have equal widths and
/// heights relative to the highest. Below the drawing are fields and buttons for the chosen point, for use by keyboard.
/// A drag moves a point between its neighbours, a double click adds one, a right click or Delete removes one; at least
/// limits.min_points remain. Dragged values have three decimals. size: of the drawing with its margins, pixels.
/// Returns whether the points changed. The editor is one ImGui group, which is active during an edit.
bool curve_editor(const char* id, std::vector<CurvePoint>& points, const CurveLimits& limits,
                  std::span<const CurvePoint> sampled, std::span<const float> histogram, const ImVec2& size);

}  // namespace widgets
