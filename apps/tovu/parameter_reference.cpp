#include "parameter_reference.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>

#include "plugin_location.h"
#include "stage/scenefile/plugin_file.h"

namespace tovu {

using stage::ParameterInfo;
using stage::ParameterKind;
using stage::ParameterNotes;
using stage::Result;

namespace {

const std::map<std::string, const char*> kConversions = {
    {"drag", "1 - value / 1000, to the power of old rate / new rate"},
    {"gravity", "times old rate / new rate; where air slows particles, corrected for that too"},
    {"speed", "as it is; where air slows particles, corrected for that"},
    {"turbulence", "times the square root of new rate / old rate"},
    {"reported", "the smoke differs a little; a warning says so"},
};

std::string acts_text(const ParameterNotes& notes) {
    if (notes.at_birth) return "at birth: a change reaches new particles only";
    return notes.per == "frame" ? "anew in each frame" : "";
}

std::string needs_text(const ParameterNotes& notes) {
    std::vector<std::string> needs;
    for (const auto& [choice, parameter] : notes.needs) needs.push_back(fmt::format("{} for {}", parameter, choice));
    return fmt::format("{}", fmt::join(needs, ", "));
}

}  // namespace

Result<NotedPlugin> load_noted_plugin(stage::Stage& host, const std::string& name) {
    const Result<std::string> file = stage::find_plugin_file(name, smoke_plugin_file(), {});
    if (!file) return file.error();
    const Result<stage::PluginId> loaded = stage::load_plugin(host, *file);
    if (!loaded) return loaded.error();
    Result<stage::PluginNotes> notes = stage::read_plugin_notes(stage::plugin(*loaded));
    if (!notes) return notes.error();
    return NotedPlugin{stage::plugin(*loaded), std::move(*notes)};
}

std::vector<ParameterGroup> grouped_parameters(const NotedPlugin& noted) {
    std::vector<ParameterGroup> groups;
    for (const std::string& name : noted.notes.groups) groups.push_back({name, {}});
    groups.emplace_back();
    const auto add = [&groups](const std::string& name, const ParameterInfo& parameter) {
        std::find_if(groups.begin(), groups.end(), [&](const ParameterGroup& group) {
            return group.name == name;
        })->parameters.push_back(&parameter);
    };
    for (const ParameterNotes& notes : noted.notes.parameters)
        add(notes.group, *find_parameter(noted.plugin, notes.name));
    for (const ParameterInfo& parameter : noted.plugin.parameters) {
        if (find_notes(noted.notes, parameter.name) == nullptr) add("", parameter);
    }
    std::erase_if(groups, [](const ParameterGroup& group) { return group.parameters.empty(); });
    return groups;
}

std::string value_text(const stage::ParameterValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return '"' + *text + '"';
    if (const auto* number = std::get_if<double>(&value)) return fmt::format("{:.10g}", *number);
    if (const auto* whole = std::get_if<int>(&value)) return std::to_string(*whole);
    return std::get<bool>(value) ? "true" : "false";
}

std::string values_text(const ParameterInfo& parameter) {
    switch (parameter.kind) {
        case ParameterKind::kInt:
        case ParameterKind::kFloat:
            return fmt::format("{:.10g} to {:.10g}", parameter.minimum, parameter.maximum);
        case ParameterKind::kBool:
            return "true, false";
        case ParameterKind::kRadio:
            return fmt::format("\"{}\"", fmt::join(parameter.choices, "\", \""));
        default:
            return fmt::format("at most {} bytes", parameter.max_length);
    }
}

std::vector<std::pair<std::string, std::string>> parameter_facts(const NotedPlugin& noted,
                                                                 const ParameterInfo& parameter) {
    std::vector<std::pair<std::string, std::string>> facts = {
        {"kind", stage::to_string(parameter.kind)},
        {"values", values_text(parameter)},
        {"default", value_text(parameter.initial)},
    };
    const ParameterNotes* notes = find_notes(noted.notes, parameter.name);
    if (notes == nullptr) return facts;
    facts.emplace_back("unit", notes->unit);
    facts.emplace_back("acts", acts_text(*notes));
    facts.emplace_back("acts only while", to_string(notes->acts_when, noted.plugin));
    facts.emplace_back("needs", needs_text(*notes));
    if (const auto conversion = kConversions.find(notes->conversion); conversion != kConversions.end())
        facts.emplace_back("at another frame rate", conversion->second);
    std::erase_if(facts, [](const auto& fact) { return fact.second.empty(); });
    return facts;
}

}  // namespace tovu
