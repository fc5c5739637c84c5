#include "parameter_states.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>

namespace tovu {

namespace {

using stage::ParameterKind;
using stage::ParameterValue;

ParameterValue as_shown(const stage::ParameterInfo& info, const ParameterValue& value) {
    const auto* whole = std::get_if<int>(&value);
    if (whole != nullptr && info.kind == ParameterKind::kFloat) return static_cast<double>(*whole);
    if (whole != nullptr && info.kind == ParameterKind::kRadio && *whole >= 0 &&
        static_cast<size_t>(*whole) < info.choices.size())
        return info.choices[static_cast<size_t>(*whole)];
    return value;
}

// Whether a parameter of another plug-in names this container. That plug-in may work on the container's particles.
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

// "0 to 100; default 40. Unit: %." Leaves out limits from 9e5 on. Empty for parameters that are not numbers.
std::string range_text(const stage::ParameterInfo& info, const std::string& unit) {
    constexpr double kFar = 9e5;
    if (info.kind != ParameterKind::kInt && info.kind != ParameterKind::kFloat) return "";
    const std::string range = info.maximum < kFar    ? fmt::format("{:.10g} to {:.10g}", info.minimum, info.maximum)
                              : info.minimum > -kFar ? fmt::format("{:.10g} or more", info.minimum)
                                                     : "Any number";
    return fmt::format("{}; default {}.{}", range, value_text(info.initial),
                       unit.empty() ? "" : " Unit: " + unit + ".");
}

// Replaces parameter names by their labels. Names without an underscore stay, since they may be plain words.
std::string with_labels(const std::string& text, const stage::Plugin& plugin) {
    const auto is_of_name = [](char c) { return c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0; };
    std::string shown;
    for (auto at = text.begin(); at != text.end();) {
        const auto end = is_of_name(*at) ? std::find_if_not(at, text.end(), is_of_name) : at + 1;
        const std::string word(at, end);
        const bool is_name = word.find('_') != std::string::npos;
        const stage::ParameterInfo* named = is_name ? stage::find_parameter(plugin, word) : nullptr;
        shown += named != nullptr ? named->label : word;
        at = end;
    }
    return shown;
}

}  // namespace

std::vector<ParameterStates> parameter_states(const SceneFacts& facts, const ContainerFacts& container,
                                              const std::map<std::string, ParameterValue>& written) {
    const NotedPlugin& noted = *container.noted;
    IndexedValues values = container.values;
    for (const auto& [name, value] : written)
        if (const stage::ParameterInfo* info = stage::find_parameter(noted.plugin, name))
            values[static_cast<size_t>(info->index)] = as_shown(*info, value);
    const bool attached = is_attached(facts, container);
    std::vector<ParameterStates> groups;
    for (const ParameterGroup& group : grouped_parameters(noted)) {
        groups.push_back({group.name, {}});
        for (const stage::ParameterInfo* info : group.parameters) {
            const stage::ParameterNotes* notes = stage::find_notes(noted.notes, info->name);
            groups.back().parameters.push_back({info, notes, values[static_cast<size_t>(info->index)],
                                                written.contains(info->name),
                                                needs_of(*info, noted, values, attached)});
        }
    }
    return groups;
}

bool has_words(const std::string& text, const std::string& search) {
    return lower(text).find(lower(search)) != std::string::npos;
}

bool matches_search(const ParameterState& parameter, const std::string& search) {
    const stage::ParameterNotes* notes = parameter.notes;
    return has_words(parameter.info->name, search) || has_words(parameter.info->label, search) ||
           (notes != nullptr &&
            (has_words(notes->sentence, search) || has_words(notes->more, search) || has_words(notes->group, search)));
}

std::string needs_text(const ParameterState& parameter) {
    std::vector<std::string> words;
    for (const Need& need : parameter.needs.list) words.push_back(need.words);
    if (words.empty()) return parameter.needs.is_idle ? "Has no effect." : "";
    return fmt::format("{}: {}.", parameter.needs.is_idle ? "No effect now, needs" : "Needs", fmt::join(words, ", "));
}

std::string help_text(const ParameterState& parameter, const stage::Plugin& plugin) {
    std::string text;
    const auto add = [&](const std::string& line) {
        if (!line.empty()) text += with_labels(line, plugin) + "\n";
    };
    const stage::ParameterNotes none;
    const stage::ParameterNotes& notes = parameter.notes != nullptr ? *parameter.notes : none;
    add(notes.sentence);
    add(needs_text(parameter));
    add(range_text(*parameter.info, notes.unit));
    add(notes.more);
    if (notes.at_birth) add("A change reaches new particles only.");
    return text + "Name in files: " + parameter.info->name;
}

std::string short_unit(const ParameterState& parameter) {
    std::string unit = parameter.notes != nullptr ? parameter.notes->unit : "";
    if (unit.empty() || std::isdigit(static_cast<unsigned char>(unit.front())) != 0) return "";
    constexpr std::pair<const char*, const char*> kShort[] = {
        {", per ", " per "}, {" per ", "/"}, {"seconds", "s"}, {"second", "s"}, {"degrees", "°"}, {"thousandths", "‰"}};
    for (const auto& [words, sign] : kShort)
        for (size_t at = unit.find(words); at != std::string::npos; at = unit.find(words))
            unit.replace(at, std::string_view(words).size(), sign);
    unit = unit.substr(0, std::min(unit.find(','), unit.find(" of ")));
    return unit.starts_with("°") ? unit : " " + unit;
}

}  // namespace tovu
