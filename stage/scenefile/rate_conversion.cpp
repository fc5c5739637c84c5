#include "rate_conversion.h"

#include <algorithm>
#include <cmath>

namespace stage {

namespace {

constexpr double kDragScale = 1000.0;

void hold(RateValue& value) {
    value.value = std::clamp(value.value, value.minimum, value.maximum);
}

// The factor d by which velocities are multiplied per frame, at the old rate and at the new one.
struct DragFactors {
    double before = 1.0;
    double after = 1.0;
};

DragFactors convert_drag(std::span<RateValue> values, double ratio) {
    const auto drag = std::find_if(values.begin(), values.end(), [](const RateValue& v) { return v.kind == "drag"; });
    if (drag == values.end()) return {};
    DragFactors factors;
    factors.before = 1.0 - drag->value / kDragScale;
    drag->value = -std::expm1(std::log1p(-drag->value / kDragScale) / ratio) * kDragScale;
    hold(*drag);
    factors.after = 1.0 - drag->value / kDragScale;
    return factors;
}

}  // namespace

void convert_rate(std::span<RateValue> values, double ratio) {
    const DragFactors d = convert_drag(values, ratio);
    const bool has_drag = d.before != 1.0 && d.after != 1.0;
    const double loss = has_drag ? (1.0 - d.after) / (1.0 - d.before) : 1.0 / ratio;
    for (RateValue& value : values) {
        if (value.kind == "speed") value.value *= ratio * loss;
        if (value.kind == "gravity") value.value *= loss * d.before / d.after;
        if (value.kind == "turbulence") value.value *= std::sqrt(ratio);
        if (value.kind != "drag") hold(value);
    }
}

}  // namespace stage
