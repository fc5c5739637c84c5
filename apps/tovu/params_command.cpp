#include "params_command.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "plugin_location.h"
#include "stage/plugins/plugin.h"
#include "stage/scene/stage.h"
#include "stage/scenefile/plugin_file.h"

namespace tovu {

namespace {

using Json = nlohmann::ordered_json;
using stage::ParameterInfo;
using stage::ParameterKind;

bool has_range(const ParameterInfo& parameter) {
    return parameter.kind == ParameterKind::kInt || parameter.kind == ParameterKind::kFloat;
}

bool is_text(const ParameterInfo& parameter) {
    return parameter.kind == ParameterKind::kString || parameter.kind == ParameterKind::kContainer ||
           parameter.kind == ParameterKind::kImage;
}

Json json_of(const ParameterInfo& parameter) {
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
    return json;
}

std::string json_text(const stage::Plugin& plugin) {
    Json json = {{"name", plugin.name},
                 {"type", plugin.type},
                 {"instance_bytes", plugin.total_size},
                 {"uses_lod", plugin.uses_lod},
                 {"uses_events", plugin.uses_events}};
    for (const char* list : {"info", "parameters", "buttons", "events"}) json[list] = Json::array();
    for (const stage::InfoText& info : plugin.info_texts)
        json["info"].push_back({{"name", info.name}, {"text", info.text}});
    for (const ParameterInfo& parameter : plugin.parameters) json["parameters"].push_back(json_of(parameter));
    for (const stage::PushButton& button : plugin.buttons)
        json["buttons"].push_back({{"name", button.name}, {"label", button.label}, {"action", button.action}});
    for (const stage::ProfilingEvent& event : plugin.events) json["events"].push_back(event.name);
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string default_text(const ParameterInfo& parameter) {
    if (const auto* text = std::get_if<std::string>(&parameter.initial)) return '"' + *text + '"';
    if (const auto* number = std::get_if<double>(&parameter.initial)) return fmt::format("{:.10g}", *number);
    if (const auto* whole = std::get_if<int>(&parameter.initial)) return std::to_string(*whole);
    return std::get<bool>(parameter.initial) ? "true" : "false";
}

std::string values_text(const ParameterInfo& parameter) {
    if (has_range(parameter)) return fmt::format("{:.10g} to {:.10g}", parameter.minimum, parameter.maximum);
    if (parameter.kind == ParameterKind::kRadio) return fmt::format("\"{}\"", fmt::join(parameter.choices, "\", \""));
    if (is_text(parameter)) return fmt::format("at most {} bytes", parameter.max_length);
    return "true, false";
}

std::string table_text(const stage::Plugin& plugin) {
    std::vector<std::vector<std::string>> rows = {{"index", "name", "label", "kind", "default", "values"}};
    for (const ParameterInfo& parameter : plugin.parameters)
        rows.push_back({std::to_string(parameter.index), parameter.name, parameter.label,
                        stage::to_string(parameter.kind), default_text(parameter), values_text(parameter)});
    std::vector<size_t> widths(rows[0].size(), 0);
    for (const auto& row : rows) {
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text = fmt::format("{}: {} parameters, {} bytes per instance\n", plugin.name, plugin.parameters.size(),
                                   plugin.total_size);
    for (const stage::InfoText& info : plugin.info_texts) text += fmt::format("{}: {}\n", info.name, info.text);
    text += '\n';
    for (const auto& row : rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) line += fmt::format("{:<{}}  ", row[i], widths[i]);
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    text += "\nPush buttons:\n";
    for (const stage::PushButton& button : plugin.buttons)
        text += fmt::format("{:<{}}  \"{}\", action {}\n", button.name, widths[1], button.label, button.action);
    return text;
}

}  // namespace

stage::Result<std::string> params_text(const ParamsOptions& options) {
    const stage::Result<std::string> file = stage::find_plugin_file(options.plugin, smoke_plugin_file(), {});
    if (!file) return file.error();
    const stage::StagePtr host = stage::make_stage();
    const stage::Result<stage::PluginId> loaded = stage::load_plugin(*host, *file);
    if (!loaded) return loaded.error();
    const stage::Plugin& plugin = stage::plugin(*loaded);
    return options.json ? json_text(plugin) : table_text(plugin);
}

}  // namespace tovu
