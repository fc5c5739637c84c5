#include "parameter_states.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace tovu {

namespace {

using stage::ParameterKind;
using stage::ParameterValue;

using Values = std::vector<ParameterValue>;  // by index

ParameterValue as_shown(const stage::ParameterInfo& info, const ParameterValue& value) {
    const auto* whole = std::get_if<int>(&value);
    if (whole != nullptr && info.kind == ParameterKind::kFloat) return static_cast<double>(*whole);
    if (whole != nullptr && info.kind == ParameterKind::kRadio && *whole >= 0 &&
        static_cast<size_t>(*whole) < info.choices.size())
        return info.choices[static_cast<size_t>(*whole)];
    return value;
}

bool is_number(const ParameterValue& value) {
    return !std::holds_alternative<std::string>(value);
}

double number_of(const ParameterValue& value) {
    if (const auto* whole = std::get_if<int>(&value)) return *whole;
    if (const auto* number = std::get_if<double>(&value)) return *number;
    const auto* flag = std::get_if<bool>(&value);
    return flag != nullptr && *flag ? 1.0 : 0.0;
}

bool are_equal(const ParameterValue& a, const ParameterValue& b) {
    return is_number(a) && is_number(b) ? number_of(a) == number_of(b) : a == b;
}

bool holds(const stage::ValueTest& test, const stage::Plugin& plugin, const Values& values) {
    const stage::ParameterInfo* info = stage::find_parameter(plugin, test.parameter);
    if (info == nullptr) return true;
    const ParameterValue& value = values[static_cast<size_t>(info->index)];
    if (test.set) return is_number(value) ? number_of(value) != 0.0 : value != ParameterValue(std::string());
    return std::any_of(test.values.begin(), test.values.end(),
                       [&](const ParameterValue& wanted) { return are_equal(wanted, value); });
}

bool hold(const stage::Conditions& conditions, const stage::Plugin& plugin, const Values& values, bool attached) {
    return conditions.empty() ||
           std::any_of(conditions.begin(), conditions.end(), [&](const stage::Condition& condition) {
               return (attached || !condition.attached) &&
                      std::all_of(condition.tests.begin(), condition.tests.end(),
                                  [&](const stage::ValueTest& test) { return holds(test, plugin, values); });
           });
}

// Whether another plug-in names this container: it may work on its particles.
bool is_attached(const SceneFacts& facts, const ContainerFacts& container) {
    for (const ContainerFacts& other : facts.containers) {
        if (!other.noted || &other == &container) continue;
        for (const stage::ParameterInfo& info : other.noted->plugin.parameters)
            if (info.kind == ParameterKind::kContainer &&
                other.values[static_cast<size_t>(info.index)] == ParameterValue(container.name))
                return true;
    }
    return false;
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

std::vector<ParameterStates> parameter_states(const SceneFacts& facts, const ContainerFacts& container,
                                              const std::map<std::string, ParameterValue>& written) {
    const NotedPlugin& noted = *container.noted;
    Values values = container.values;
    for (const auto& [name, value] : written)
        if (const stage::ParameterInfo* info = stage::find_parameter(noted.plugin, name))
            values[static_cast<size_t>(info->index)] = as_shown(*info, value);
    const bool attached = is_attached(facts, container);
    std::vector<ParameterStates> groups;
    for (const ParameterGroup& group : grouped_parameters(noted)) {
        groups.push_back({group.name, {}});
        for (const stage::ParameterInfo* info : group.parameters) {
            const stage::ParameterNotes* notes = stage::find_notes(noted.notes, info->name);
            ParameterState state{
                info, notes, values[static_cast<size_t>(info->index)], written.contains(info->name), {}};
            if (notes != nullptr && notes->idle)
                state.idle_reason = "nothing reads it";
            else if (notes != nullptr && !hold(notes->acts_when, noted.plugin, values, attached))
                state.idle_reason = "has an effect only while " + to_string(notes->acts_when, noted.plugin);
            groups.back().parameters.push_back(std::move(state));
        }
    }
    return groups;
}

bool matches_search(const ParameterState& parameter, const std::string& search) {
    if (search.empty()) return true;
    const std::string wanted = lower(search);
    const auto has = [&](const std::string& text) { return lower(text).find(wanted) != std::string::npos; };
    return has(parameter.info->name) || has(parameter.info->label) ||
           (parameter.notes != nullptr &&
            (has(parameter.notes->sentence) || has(parameter.notes->more) || has(parameter.notes->group)));
}

std::string help_text(const ParameterState& parameter) {
    const stage::ParameterInfo& info = *parameter.info;
    std::string text;
    if (!parameter.idle_reason.empty()) text += "No effect now: " + parameter.idle_reason + ".\n";
    if (parameter.notes != nullptr) {
        text += parameter.notes->sentence;
        if (!parameter.notes->more.empty()) text += " " + parameter.notes->more;
        text += "\n";
    }
    text += fmt::format("{}: {}", info.name, values_text(info));
    if (parameter.notes != nullptr && !parameter.notes->unit.empty()) text += ", " + parameter.notes->unit;
    text += "; default " + value_text(info.initial);
    if (parameter.notes != nullptr && parameter.notes->at_birth) text += "; read at birth";
    return text;
}

std::string short_unit(const ParameterState& parameter) {
    if (parameter.notes == nullptr) return "";
    const std::string& unit = parameter.notes->unit;
    if (unit == "degrees") return "°";
    if (unit == "seconds") return " s";
    if (unit == "units") return "";
    if (unit.starts_with("units per second")) return "/s";
    if (unit == "births per second") return "/s";
    return unit.starts_with("%") ? " %" : "";
}

}  // namespace tovu
