#include "plugin_notes.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>

#include "key_reader.h"
#include "stage/names.h"
#include "stage/plugins/parameter_values.h"

namespace stage {

namespace {

// The notes of one parameter as they are read.
struct WrittenNotes {
    const Plugin& plugin;
    const ParameterInfo& parameter;
    bool is_curve = false;
    CurveFormat curve{};
    std::map<std::string, std::string> needs{};
};

struct WrittenPlugin {
    const Plugin& plugin;
    PluginNotes notes{};
};

void read_needs(KeyReader& reader, const KeyedNode& entry, WrittenNotes& notes) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    const std::vector<std::string>& choices = notes.parameter.choices;
    for (const auto& [key, node] : entries_as_written(*table)) {
        const std::string choice(key->str());
        std::string needed;
        if (std::find(choices.begin(), choices.end(), choice) == choices.end())
            report(reader, key->source(), fmt::format("unknown choice '{}': {}", choice, name_hint(choice, choices)));
        else if (read_text(reader, {choice.c_str(), *node}, needed) && find_parameter(notes.plugin, needed) == nullptr)
            report(reader, node->source(), unknown_parameter(notes.plugin, needed).message);
        else
            notes.needs[choice] = needed;
    }
}

const KeyRow<WrittenNotes> kNoteKeys[] = {
    {"format",
     [](KeyReader& r, const KeyedNode& e, WrittenNotes& n) {
         size_t choice = 0;
         n.is_curve = read_choice(r, e, {"curve"}, choice);
     }},
    {"components",
     [](KeyReader& r, const KeyedNode& e, WrittenNotes& n) { read_integer(r, e, 1, 16, n.curve.components); }},
    {"range", [](KeyReader& r, const KeyedNode& e, WrittenNotes& n) { read_pair(r, e, n.curve.range); }},
    {"steps", [](KeyReader& r, const KeyedNode& e, WrittenNotes& n) { read_flag(r, e, n.curve.steps); }},
    {"needs", read_needs},
};

void read_parameters(KeyReader& reader, const KeyedNode& entry, WrittenPlugin& written) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    for (const auto& [key, node] : entries_as_written(*table)) {
        const std::string name(key->str());
        const ParameterInfo* parameter = find_parameter(written.plugin, name);
        const toml::table* keys = read_table(reader, {name.c_str(), *node});
        if (parameter == nullptr) report(reader, key->source(), unknown_parameter(written.plugin, name).message);
        if (parameter == nullptr || keys == nullptr) continue;
        WrittenNotes notes{written.plugin, *parameter};
        read_keys(reader, *keys, fmt::format("[parameter.{}]", name), kNoteKeys, notes);
        ParameterNotes& out = written.notes[name];
        if (notes.is_curve) out.curve = notes.curve;
        out.needs = std::move(notes.needs);
    }
}

const KeyRow<WrittenPlugin> kPluginKeys[] = {{"parameter", read_parameters}};

}  // namespace

Result<PluginNotes> read_plugin_notes(const Plugin& plugin) {
    const std::filesystem::path file = std::filesystem::path(plugin.path).parent_path() / (plugin.name + ".toml");
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) return PluginNotes{};
    KeyReader reader{file.string(), file.parent_path(), {}};
    WrittenPlugin written{plugin};
    try {
        const toml::table table = toml::parse_file(file.string());
        read_keys(reader, table, "the notes of a plug-in", kPluginKeys, written);
    } catch (const toml::parse_error& error) {
        report_parse_error(reader, error);
    }
    if (!reader.errors.empty()) return Error{fmt::format("{}", fmt::join(reader.errors, "\n"))};
    return std::move(written.notes);
}

}  // namespace stage
