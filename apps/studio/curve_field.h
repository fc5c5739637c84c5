// A field for the text of a curve: an editor of points or colour stops, and the text itself.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "stage/scenefile/curve_format.h"

namespace tovu {

/// The format of a curve and what is drawn with it.
struct CurveShown {
    const stage::CurveFormat& format;
    // The curve as the plug-in samples it, with numbers as in the text. Empty: straight lines are drawn.
    std::span<const double> sampled;
    std::span<const float> histogram;  // heights of the bars behind the curve, of equal width; may be empty
};

/// Curves of one component are edited as points, curves of three components as colours, others only as text. Shows the
/// mistake of a text that is not a curve. width: pixels.
/// Returns the new text at every step of a drag and every typed letter. The field is one ImGui group, which is active
/// from the start to the end of an edit.
std::optional<std::string> curve_field(const std::string& text, const CurveShown& shown, float width);

}  // namespace tovu
