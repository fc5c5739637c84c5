#include "parameter_track.h"

#include <fmt/format.h>

#include <cmath>

#include "curve_text.h"
#include "parameter_moments.h"
#include "timeline.h"

namespace stage {

namespace {

bool is_number(const ParameterInfo& parameter) {
    return parameter.kind == ParameterKind::kInt || parameter.kind == ParameterKind::kFloat;
}

// Checks that one curve can be interpolated to the other.
Result<Done> check_curves(const ParameterValue& from, const ParameterValue& to, const CurveFormat& format) {
    const std::optional<std::vector<double>> before = curve_numbers(std::get<std::string>(from));
    const std::optional<std::vector<double>> after = curve_numbers(std::get<std::string>(to));
    if (!before || !after) return Error{"curves that are blended must hold numbers only"};
    if (before->size() == after->size()) return Done{};
    const auto size = static_cast<size_t>(format.components) + 1;
    return Error{
        fmt::format("curves that are blended must have equally many points, but there are {} here, {} in the key "
                    "before; ease = \"step\" switches at once",
                    after->size() / size, before->size() / size)};
}

std::string blended_curve(const std::string& from, const std::string& to, double fraction) {
    std::vector<double> numbers = *curve_numbers(from);
    const std::vector<double> targets = *curve_numbers(to);
    std::string text;
    for (size_t i = 0; i < numbers.size(); ++i)
        text += fmt::format("{}{:.6g}", i == 0 ? "" : " ", numbers[i] + fraction * (targets[i] - numbers[i]));
    return text;
}

}  // namespace

void check_blends(const Track& track, const Plugin& plugin, const PluginNotes& notes,
                  std::vector<std::string>& errors) {
    const ParameterInfo& parameter = *find_parameter(plugin, track.parameter);
    if (is_number(parameter)) return;
    const ParameterNotes* noted = find_notes(notes, parameter.name);
    for (size_t i = 1; i < track.keys.size(); ++i) {
        if (track.keys[i].ease == Ease::kStep) continue;
        const ParameterSetting& setting = track.keys[i].setting;
        const Result<Done> checked =
            noted != nullptr && noted->curve
                ? check_curves(track.keys[i - 1].setting.value, setting.value, *noted->curve)
                : Error{fmt::format("parameter '{}' is neither a number nor a curve: only a key with ease = \"step\" "
                                    "can change it",
                                    parameter.name)};
        if (!checked) errors.push_back(setting.place + ": " + checked.error().message);
    }
}

ParameterValue parameter_value(const Track& track, const ParameterInfo& parameter, double seconds) {
    const KeyMoment moment = key_moment(track.keys, seconds);
    const ParameterValue& from = track.keys[moment.key].setting.value;
    if (moment.fraction == 0.0) return from;
    const ParameterValue& to = track.keys[moment.key + 1].setting.value;
    if (!is_number(parameter))
        return blended_curve(std::get<std::string>(from), std::get<std::string>(to), moment.fraction);
    const double number = number_of(from) + moment.fraction * (number_of(to) - number_of(from));
    if (parameter.kind == ParameterKind::kInt) return static_cast<int>(std::lround(number));
    return number;
}

}  // namespace stage
