#include "params_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "parameter_reference.h"
#include "stage/plugins/parameter_values.h"

namespace tovu {

namespace {

using Json = nlohmann::ordered_json;
using stage::ParameterInfo;
using stage::ParameterKind;
using stage::ParameterNotes;

bool has_range(const ParameterInfo& parameter) {
    return parameter.kind == ParameterKind::kInt || parameter.kind == ParameterKind::kFloat;
}

bool is_text(const ParameterInfo& parameter) {
    return parameter.kind == ParameterKind::kString || parameter.kind == ParameterKind::kContainer ||
           parameter.kind == ParameterKind::kImage;
}

Json json_of(const NotedPlugin& noted, const ParameterInfo& parameter) {
    Json json = {{"index", parameter.index},
                 {"name", parameter.name},
                 {"label", parameter.label},
                 {"kind", stage::to_string(parameter.kind)}};
    std::visit([&json](const auto& value) { json["default"] = value; }, parameter.initial);
    if (has_range(parameter)) {
        json["minimum"] = parameter.minimum;
        json["maximum"] = parameter.maximum;
    }
    if (parameter.kind == ParameterKind::kRadio) json["choices"] = parameter.choices;
    if (is_text(parameter)) json["max_length"] = parameter.max_length;
    const ParameterNotes* notes = find_notes(noted.notes, parameter.name);
    if (notes == nullptr) return json;
    const std::pair<const char*, std::string> texts[] = {{"group", notes->group},
                                                         {"sentence", notes->sentence},
                                                         {"more", notes->more},
                                                         {"unit", notes->unit},
                                                         {"per", notes->per},
                                                         {"acts_when", to_string(notes->acts_when, noted.plugin)},
                                                         {"conversion", notes->conversion}};
    for (const auto& [key, text] : texts) {
        if (!text.empty()) json[key] = text;
    }
    json["at_birth"] = notes->at_birth;
    return json;
}

std::string text_of(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string json_text(const NotedPlugin& noted) {
    const stage::Plugin& plugin = noted.plugin;
    Json json = {{"name", plugin.name},
                 {"type", plugin.type},
                 {"instance_bytes", plugin.total_size},
                 {"uses_lod", plugin.uses_lod},
                 {"uses_events", plugin.uses_events}};
    for (const char* list : {"info", "parameters", "buttons", "events"}) json[list] = Json::array();
    for (const stage::InfoText& info : plugin.info_texts)
        json["info"].push_back({{"name", info.name}, {"text", info.text}});
    for (const ParameterInfo& parameter : plugin.parameters) json["parameters"].push_back(json_of(noted, parameter));
    for (const stage::PushButton& button : plugin.buttons)
        json["buttons"].push_back({{"name", button.name}, {"label", button.label}, {"action", button.action}});
    for (const stage::ProfilingEvent& event : plugin.events) json["events"].push_back(event.name);
    return text_of(json);
}

using Row = std::vector<std::string>;

std::string aligned(const Row& row, const std::vector<size_t>& widths) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) line += fmt::format("{:<{}}  ", row[i], widths[i]);
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

Row row_of(const NotedPlugin& noted, const ParameterInfo& parameter) {
    const ParameterNotes* notes = find_notes(noted.notes, parameter.name);
    return {std::to_string(parameter.index),
            parameter.name,
            parameter.label,
            stage::to_string(parameter.kind),
            value_text(parameter.initial),
            values_text(parameter),
            notes == nullptr ? "" : notes->unit};
}

std::string table_text(const NotedPlugin& noted) {
    const stage::Plugin& plugin = noted.plugin;
    const Row heading = {"index", "name", "label", "kind", "default", "values", "unit"};
    std::vector<size_t> widths;
    for (const std::string& cell : heading) widths.push_back(cell.size());
    for (const ParameterInfo& parameter : plugin.parameters) {
        const Row row = row_of(noted, parameter);
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text = fmt::format("{}: {} parameters, {} bytes per instance\n", plugin.name, plugin.parameters.size(),
                                   plugin.total_size);
    for (const stage::InfoText& info : plugin.info_texts) text += fmt::format("{}: {}\n", info.name, info.text);
    text += '\n' + aligned(heading, widths);
    for (const ParameterGroup& group : grouped_parameters(noted)) {
        if (!group.name.empty()) text += fmt::format("\n{}\n", group.name);
        for (const ParameterInfo* parameter : group.parameters) {
            text += aligned(row_of(noted, *parameter), widths);
            const ParameterNotes* notes = find_notes(noted.notes, parameter->name);
            if (notes != nullptr) text += fmt::format("{:{}}  {}\n", "", widths[0], notes->sentence);
        }
    }
    text += "\nPush buttons:\n";
    for (const stage::PushButton& button : plugin.buttons)
        text += fmt::format("{:<{}}  \"{}\", action {}\n", button.name, widths[1], button.label, button.action);
    return text;
}

std::string detail_text(const NotedPlugin& noted, const ParameterInfo& parameter) {
    std::string text = fmt::format("{} (\"{}\")\n", parameter.name, parameter.label);
    if (const ParameterNotes* notes = find_notes(noted.notes, parameter.name)) {
        text += notes->sentence + "\n";
        if (!notes->more.empty()) text += notes->more + "\n";
    }
    text += '\n';
    size_t width = 0;
    const auto facts = parameter_facts(noted, parameter);
    for (const auto& [name, fact] : facts) width = std::max(width, name.size());
    for (const auto& [name, fact] : facts) text += aligned({name, fact}, {width, fact.size()});
    return text;
}

}  // namespace

stage::Result<std::string> params_text(const ParamsOptions& options) {
    const stage::StagePtr host = stage::make_stage();
    std::string wanted = options.parameter;
    std::string plugin = options.plugin;
    if (wanted.empty() && !plugin.empty()) {
        const stage::Result<NotedPlugin> smoke = load_noted_plugin(*host, "");
        if (smoke && find_parameter(smoke->plugin, plugin) != nullptr) std::swap(wanted, plugin);
    }
    const stage::Result<NotedPlugin> noted = load_noted_plugin(*host, plugin);
    if (!noted) return noted.error();
    if (wanted.empty()) return options.json ? json_text(*noted) : table_text(*noted);
    const ParameterInfo* parameter = find_parameter(noted->plugin, wanted);
    if (parameter == nullptr) return stage::unknown_parameter(noted->plugin, wanted);
    return options.json ? text_of(json_of(*noted, *parameter)) : detail_text(*noted, *parameter);
}

}  // namespace tovu
