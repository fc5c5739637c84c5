// A gradient whose stops are dragged and have colours. ImGui only.
#pragma once

#include <imgui.h>

#include <array>
#include <span>
#include <vector>

namespace widgets {

struct GradientStop {
    double x = 0.0;                          // 0…1
    std::array<float, 3> color = {1, 1, 1};  // red, green, blue, 0…1
};

/// Draws the gradient with its stops below it and `histogram`, whose bars share the width evenly and are relative to
/// the highest, above it. Before the first stop and after the last one the gradient is black. Below stand fields for
/// the chosen stop, with a colour picker. A drag moves a stop between its neighbours, a double click adds one with the
/// colour that is there, a right click or Delete removes one; two stay at least. Stops may share a place: that is a
/// step. size: of the drawing with its margins, pixels. Returns whether the stops changed. The whole is one ImGui
/// group: ask for its activation to bracket an edit.
bool gradient_editor(const char* id, std::vector<GradientStop>& stops, std::span<const float> histogram,
                     const ImVec2& size);

}  // namespace widgets
