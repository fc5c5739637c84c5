#include "linted.h"

#include <algorithm>

namespace stage {

namespace {

size_t index_of(const LintedInstance& linted, const std::string& name) {
    return static_cast<size_t>(find_parameter(linted.plugin, name)->index);
}

bool holds(const LintedInstance& linted, const ParameterMoment& moment, const ValueTest& test) {
    const ParameterValue& value = value_of(linted, moment, test.parameter);
    if (test.set) return number_of(value) != 0.0 || !text_of(value).empty();
    const ParameterInfo& parameter = *find_parameter(linted.plugin, test.parameter);
    return std::any_of(test.values.begin(), test.values.end(),
                       [&](const ParameterValue& one) { return as_read(parameter, one) == value; });
}

}  // namespace

const ContainerDescription& description_of(const LintedInstance& linted) {
    return linted.built.description.containers[linted.container];
}

const ParameterInfo* with_role(const LintedInstance& linted, const std::string& role) {
    for (const ParameterNotes& notes : linted.notes.parameters)
        if (notes.role == role) return find_parameter(linted.plugin, notes.name);
    return nullptr;
}

std::vector<double> numbers_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& role) {
    std::vector<double> numbers;
    for (const ParameterNotes& notes : linted.notes.parameters)
        if (notes.role == role) numbers.push_back(number_of(value_of(linted, moment, notes.name)));
    return numbers;
}

double number_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& role,
                 double otherwise) {
    const std::vector<double> numbers = numbers_of(linted, moment, role);
    return numbers.empty() ? otherwise : numbers[0];
}

const ParameterValue& value_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& name) {
    return moment.values[index_of(linted, name)];
}

const ParameterSetting* setting_of(const LintedInstance& linted, const ParameterMoment& moment,
                                   const std::string& name) {
    return moment.settings[index_of(linted, name)];
}

const Place& place_of(const LintedInstance& linted, const ParameterMoment& moment, const std::string& name) {
    const ParameterSetting* setting = setting_of(linted, moment, name);
    return setting == nullptr ? description_of(linted).place : setting->place;
}

bool holds(const LintedInstance& linted, const ParameterMoment& moment, const Conditions& conditions) {
    const auto condition_holds = [&](const Condition& condition) {
        return (linted.attached || !condition.attached) &&
               std::all_of(condition.tests.begin(), condition.tests.end(),
                           [&](const ValueTest& test) { return holds(linted, moment, test); });
    };
    return conditions.empty() || std::any_of(conditions.begin(), conditions.end(), condition_holds);
}

}  // namespace stage
