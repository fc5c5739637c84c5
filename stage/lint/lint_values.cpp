// Rules about values without the expected effect.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "linted.h"

namespace stage {

namespace {

// Reports a value that differs from the default and never has an effect.
void lint_idle(const LintedInstance& linted, const ParameterNotes& notes, std::vector<std::string>& lines) {
    if (notes.acts_when.empty() && !notes.idle) return;
    const ParameterInfo& parameter = *find_parameter(linted.plugin, notes.name);
    const ParameterMoment* idle = nullptr;
    for (const ParameterMoment& moment : linted.moments) {
        if (value_of(linted, moment, notes.name) == parameter.initial) continue;
        if (!notes.idle && holds(linted, moment, notes.acts_when)) return;
        if (idle == nullptr) idle = &moment;
    }
    if (idle == nullptr) return;
    lines.push_back(fmt::format("{}: {} does nothing here: {}; leave it out", place_of(linted, *idle, notes.name),
                                notes.name,
                                notes.idle ? std::string("nothing reads it")
                                           : "it acts only while " + to_string(notes.acts_when, linted.plugin)));
}

void lint_pair(const LintedInstance& linted, const std::string& lock, const ParameterPair& pair,
               std::vector<std::string>& lines) {
    for (const ParameterMoment& moment : linted.moments) {
        const ParameterSetting* setting = setting_of(linted, moment, lock);
        if (moment.made.empty() || setting == nullptr || number_of(value_of(linted, moment, lock)) == 0.0) continue;
        const double first = number_of(value_of(linted, moment, pair[0]));
        const double second = number_of(value_of(linted, moment, pair[1]));
        if (first == second) continue;
        lines.push_back(fmt::format("{}: {} binds nothing here: {} is {:g} and {} is {:g}; set both", setting->place,
                                    lock, pair[0], first, pair[1], second));
        return;
    }
}

void lint_doubled(const LintedInstance& linted, const ParameterMoment& moment, const ParameterNotes& notes,
                  std::vector<std::string>& lines) {
    const double value = number_of(value_of(linted, moment, notes.name));
    if (notes.doubles.empty() || value <= 0.0 || !holds(linted, moment, notes.doubles)) return;
    lines.push_back(fmt::format("{}: {} = {:g} counts double while {}: births reach from 0 to {:g}; set {:g} for {:g}",
                                place_of(linted, moment, notes.name), notes.name, value,
                                to_string(notes.doubles, linted.plugin), 2.0 * value, value / 2.0, value));
}

void lint_curve_ends(const ParameterSetting& setting, const CurveFormat& curve, std::vector<std::string>& lines) {
    const Result<std::vector<double>> numbers = curve_points(curve, text_of(setting.value));
    if (!numbers || curve.outside.empty()) return;
    const size_t size = static_cast<size_t>(curve.components) + 1;
    const double first = numbers->at(0), last = numbers->at(numbers->size() - size);
    const double before_last = numbers->at(numbers->size() - 2 * size);
    const double low = static_cast<double>(curve.range[0]), high = static_cast<double>(curve.range[1]);
    if (first > low)
        lines.push_back(fmt::format("{}: {} begins at {:g}: from {:g} to there {}; begin at {:g}", setting.place,
                                    setting.name, first, low, curve.outside, low));
    if (last < high)
        lines.push_back(fmt::format("{}: {} ends at {:g}: from there to {:g} {}; end at {:g}", setting.place,
                                    setting.name, last, high, curve.outside, high));
    if (last == high && before_last == high)
        lines.push_back(
            fmt::format("{}: {} has a step at its end {:g}: what follows the step is never seen; put the "
                        "step before {:g}",
                        setting.place, setting.name, high, high));
}

std::string scale_text(const Vector3& scale) {
    return fmt::format("{:.4g} x {:.4g} x {:.4g}", scale.x, scale.y, scale.z);
}

bool is_one(const Vector3& scale) {
    constexpr float kTolerance = 1e-4f;
    return std::fabs(scale.x - 1.0f) < kTolerance && std::fabs(scale.y - 1.0f) < kTolerance &&
           std::fabs(scale.z - 1.0f) < kTolerance;
}

// The world scale of the container at the start of the scene. If that is 1: the first other scale from a track of the
// container or a parent.
Vector3 scale_of(const LintedInstance& linted) {
    const SceneDescription& scene = linted.built.description;
    const Vector3 scale =
        scaling_of(world_matrix(*linted.built.stage, linted.built.container_handles[linted.container]));
    if (!is_one(scale)) return scale;
    for (auto one = static_cast<int32_t>(linted.container); one >= 0;
         one = scene.containers[static_cast<size_t>(one)].parent) {
        for (const Track& track : scene.tracks) {
            if (track.container != one || track.property != TrackProperty::kScale) continue;
            for (const TrackKey& key : track.keys)
                if (const Vector3 keyed{key.value[0], key.value[1], key.value[2]}; !is_one(keyed)) return keyed;
        }
    }
    return scale;
}

void lint_scale(const LintedInstance& linted, const ParameterMoment& moment, const ParameterNotes& notes,
                std::vector<std::string>& lines) {
    const std::string choice = text_of(value_of(linted, moment, notes.name));
    if (std::find(notes.scaled.begin(), notes.scaled.end(), choice) == notes.scaled.end()) return;
    const Vector3 scale = scale_of(linted);
    if (is_one(scale)) return;
    lines.push_back(fmt::format(
        "{}: {} = \"{}\" in '{}', whose scale is {}: it multiplies sizes, speeds and forces; keep "
        "the scale at 1 and put it into the parameters",
        place_of(linted, moment, notes.name), notes.name, choice, description_of(linted).name, scale_text(scale)));
}

}  // namespace

void lint_values(const LintedInstance& linted, std::vector<std::string>& lines) {
    for (const ParameterNotes& notes : linted.notes.parameters) {
        lint_idle(linted, notes, lines);
        for (const ParameterPair& pair : notes.binds) lint_pair(linted, notes.name, pair, lines);
        for (const ParameterMoment& moment : linted.moments) {
            if (moment.made.empty()) continue;
            lint_doubled(linted, moment, notes, lines);
            lint_scale(linted, moment, notes, lines);
            for (const ParameterSetting* setting : moment.made)
                if (setting->name == notes.name && notes.curve) lint_curve_ends(*setting, *notes.curve, lines);
        }
    }
}

}  // namespace stage
