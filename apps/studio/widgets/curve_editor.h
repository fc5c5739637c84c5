// A curve through points that are dragged. ImGui only.
#pragma once

#include <imgui.h>

#include <span>
#include <vector>

namespace widgets {

struct CurvePoint {
    double x = 0.0;
    double y = 0.0;
};

/// What the editor shows besides the points, and what points may be.
struct CurveLimits {
    double low = 0.0;    // smallest x and y
    double high = 1.0;   // largest x and y
    bool steps = false;  // two points may have one x
    size_t min_points = 2;
};

/// Draws the points over `sampled`, the curve's own values at rising x, and over `histogram`, whose bars share the
/// width evenly and are relative to the highest. Below stand fields for the chosen point, so that all can be done by
/// keyboard: choose, type, add, remove.
/// A drag moves a point between its neighbours, a double click adds one, a right click or Delete removes one; there
/// stay limits.min_points at least. Dragged values have three decimals. size: of the drawing with its
/// margins, pixels.
/// Returns whether the points changed. The whole is one ImGui group: ask for its activation to bracket an edit.
bool curve_editor(const char* id, std::vector<CurvePoint>& points, const CurveLimits& limits,
                  std::span<const CurvePoint> sampled, std::span<const float> histogram, const ImVec2& size);

}  // namespace widgets
