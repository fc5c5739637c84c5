#include "plugin_notes.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "container_reader.h"
#include "messages.h"
#include "stage/names.h"
#include "stage/plugins/parameter_values.h"

namespace stage {

namespace {

struct WrittenPlugin {
    const Plugin& plugin;
    PluginNotes notes{};
};

// The notes of one parameter, with the data that their readers need.
struct WrittenNotes {
    const WrittenPlugin& of;
    const ParameterInfo& parameter;
    ParameterNotes notes{};
    bool is_curve = false;
    CurveFormat curve{};
};

// Reads an array with `read_element`, which reports mistakes in elements.
template <class ReadElement>
void read_array(KeyReader& reader, const KeyedNode& entry, const char* elements, const ReadElement& read_element) {
    const toml::array* array = entry.node.as_array();
    if (array == nullptr)
        report(reader, entry.node.source(),
               fmt::format("{} must be an array of {}, not {}", entry.key, elements, describe(entry.node)));
    else
        for (const toml::node& element : *array) read_element(KeyedNode{entry.key, element});
}

void read_texts(KeyReader& reader, const KeyedNode& entry, std::vector<std::string>& out) {
    read_array(reader, entry, "texts", [&](const KeyedNode& element) {
        std::string text;
        if (read_text(reader, element, text)) out.push_back(text);
    });
}

// The parameter of this name. Reports an unknown name and returns null.
const ParameterInfo* named_parameter(KeyReader& reader, const toml::source_region& source, const std::string& name,
                                     const Plugin& plugin) {
    const ParameterInfo* parameter = find_parameter(plugin, name);
    if (parameter == nullptr) report(reader, source, unknown_parameter(plugin, name).message);
    return parameter;
}

void read_value_of(KeyReader& reader, const KeyedNode& entry, const ParameterInfo& parameter,
                   std::vector<ParameterValue>& out) {
    ParameterValue value;
    if (!read_value(reader, entry, value)) return;
    if (const Result<Done> checked = check_parameter(parameter, value); !checked)
        report(reader, entry.node.source(), checked.error().message);
    else
        out.push_back(value);
}

ValueTest read_test(KeyReader& reader, const KeyedNode& entry, const ParameterInfo& parameter) {
    ValueTest test{parameter.name, entry.node.value<std::string_view>() == "set", {}};
    if (test.set) return test;
    if (entry.node.is_array())
        read_array(reader, entry, "values",
                   [&](const KeyedNode& element) { read_value_of(reader, element, parameter, test.values); });
    else
        read_value_of(reader, entry, parameter, test.values);
    return test;
}

void read_condition(KeyReader& reader, const KeyedNode& entry, const WrittenNotes& written, Conditions& out) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    Condition condition;
    for (const auto& [key, node] : entries_as_written(*table)) {
        const std::string name(key->str());
        if (name == "attached")
            read_flag(reader, {"attached", *node}, condition.attached);
        else if (const ParameterInfo* parameter = named_parameter(reader, key->source(), name, written.of.plugin))
            condition.tests.push_back(read_test(reader, {parameter->name.c_str(), *node}, *parameter));
    }
    out.push_back(condition);
}

template <Conditions ParameterNotes::*out>
void read_conditions(KeyReader& reader, const KeyedNode& entry, WrittenNotes& written) {
    if (entry.node.is_array())
        read_array(reader, entry, "tables",
                   [&](const KeyedNode& element) { read_condition(reader, element, written, written.notes.*out); });
    else
        read_condition(reader, entry, written, written.notes.*out);
}

void read_parameter_name(KeyReader& reader, const KeyedNode& entry, const WrittenNotes& written, std::string& out) {
    if (read_text(reader, entry, out)) named_parameter(reader, entry.node.source(), out, written.of.plugin);
}

template <std::vector<ParameterPair> ParameterNotes::*out>
void read_pairs(KeyReader& reader, const KeyedNode& entry, WrittenNotes& written) {
    read_array(reader, entry, "pairs of parameters", [&](const KeyedNode& element) {
        const toml::array* pair = element.node.as_array();
        if (pair == nullptr || pair->size() != 2)
            return report(reader, element.node.source(),
                          fmt::format("{} takes pairs of parameters, not {}", entry.key, describe(element.node)));
        ParameterPair& names = (written.notes.*out).emplace_back();
        for (size_t i = 0; i < 2; ++i) read_parameter_name(reader, {entry.key, *pair->get(i)}, written, names[i]);
    });
}

struct WrittenOutline {
    const WrittenNotes& of;
    OutlineNotes outline{};
};

const KeyRow<WrittenOutline> kOutlineKeys[] = {
    {"plane",
     [](KeyReader& r, const KeyedNode& e, WrittenOutline& w) { read_parameter_name(r, e, w.of, w.outline.plane); }},
    {"coordinates", [](KeyReader& r, const KeyedNode& e,
                       WrittenOutline& w) { read_parameter_name(r, e, w.of, w.outline.coordinates); }},
};

void read_outline(KeyReader& reader, const KeyedNode& entry, WrittenNotes& written) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    WrittenOutline outline{written};
    read_keys(reader, *table, "an outline", kOutlineKeys, outline);
    written.notes.outline = std::move(outline.outline);
}

void read_button(KeyReader& reader, const KeyedNode& entry, const Plugin& plugin, std::string& out) {
    if (!read_text(reader, entry, out)) return;
    std::vector<std::string> names;
    for (const PushButton& button : plugin.buttons) names.push_back(button.name);
    if (std::find(names.begin(), names.end(), out) == names.end())
        report(reader, entry.node.source(), fmt::format("unknown button '{}': {}", out, name_hint(out, names)));
}

struct WrittenSamples {
    const WrittenNotes& of;
    SampleNotes samples{};
};

const KeyRow<WrittenSamples> kSampleKeys[] = {
    {"press",
     [](KeyReader& r, const KeyedNode& e, WrittenSamples& w) { read_button(r, e, w.of.of.plugin, w.samples.press); }},
    {"text",
     [](KeyReader& r, const KeyedNode& e, WrittenSamples& w) { read_parameter_name(r, e, w.of, w.samples.text); }},
};

void read_samples(KeyReader& reader, const KeyedNode& entry, WrittenNotes& written) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    WrittenSamples samples{written};
    read_keys(reader, *table, "sampled", kSampleKeys, samples);
    if (!table->contains("press") || !table->contains("text"))
        report(reader, entry.node.source(), "sampled needs press, a button, and text, a parameter");
    written.notes.sampled = std::move(samples.samples);
}

void read_needs(KeyReader& reader, const KeyedNode& entry, WrittenNotes& written) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    std::vector<std::string> choices = written.parameter.choices;
    if (written.parameter.kind == ParameterKind::kBool) choices = {"true"};
    for (const auto& [key, node] : entries_as_written(*table)) {
        const std::string choice(key->str());
        std::string needed;
        if (std::find(choices.begin(), choices.end(), choice) == choices.end())
            report(reader, key->source(), fmt::format("unknown choice '{}': {}", choice, name_hint(choice, choices)));
        else if (read_text(reader, {choice.c_str(), *node}, needed) &&
                 named_parameter(reader, node->source(), needed, written.of.plugin) != nullptr)
            written.notes.needs[choice] = needed;
    }
}

void read_one_of(KeyReader& reader, const KeyedNode& entry, const std::vector<std::string>& choices, std::string& out) {
    size_t choice = 0;
    if (read_choice(reader, entry, choices, choice)) out = choices[choice];
}

struct WrittenPicture {
    const WrittenNotes& of;
    PictureNotes picture{};
};

const KeyRow<WrittenPicture> kPictureKeys[] = {
    {"scene", [](KeyReader& r, const KeyedNode& e, WrittenPicture& w) { read_text(r, e, w.picture.scene); }},
    {"values",
     [](KeyReader& r, const KeyedNode& e, WrittenPicture& w) {
         read_array(r, e, "values",
                    [&](const KeyedNode& element) { read_value_of(r, element, w.of.parameter, w.picture.values); });
     }},
    {"with", [](KeyReader& r, const KeyedNode& e, WrittenPicture& w) { read_settings(r, e, w.picture.with); }},
};

void read_picture(KeyReader& reader, const KeyedNode& entry, WrittenNotes& written) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    WrittenPicture picture{written};
    read_keys(reader, *table, "a picture", kPictureKeys, picture);
    written.notes.picture = std::move(picture.picture);
}

void read_typical(KeyReader& reader, const KeyedNode& entry, WrittenNotes& written) {
    std::vector<ParameterValue> values;
    read_value_of(reader, entry, written.parameter, values);
    if (!values.empty()) written.notes.typical = values.front();
}

template <std::string ParameterNotes::*text>
void read_words(KeyReader& reader, const KeyedNode& entry, WrittenNotes& written) {
    read_text(reader, entry, written.notes.*text);
}

const KeyRow<WrittenNotes> kNoteKeys[] = {
    {"group",
     [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_one_of(r, e, w.of.notes.groups, w.notes.group); }},
    {"sentence", read_words<&ParameterNotes::sentence>},
    {"more", read_words<&ParameterNotes::more>},
    {"unit", read_words<&ParameterNotes::unit>},
    {"conversion",
     [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) {
         read_one_of(r, e, {"drag", "gravity", "speed", "turbulence", "reported"}, w.notes.conversion);
     }},
    {"per",
     [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) {
         read_one_of(r, e, {"second", "frame"}, w.notes.per);
     }},
    {"at_birth", [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_flag(r, e, w.notes.at_birth); }},
    {"acts_when", read_conditions<&ParameterNotes::acts_when>},
    {"doubles", read_conditions<&ParameterNotes::doubles>},
    {"idle", [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_flag(r, e, w.notes.idle); }},
    {"role", [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_one_of(r, e, kRoles, w.notes.role); }},
    {"binds", read_pairs<&ParameterNotes::binds>},
    {"covers", read_pairs<&ParameterNotes::covers>},
    {"scaled", [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_texts(r, e, w.notes.scaled); }},
    {"outline", read_outline},
    {"needs", read_needs},
    {"typical", read_typical},
    {"picture", read_picture},
    {"format",
     [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) {
         size_t choice = 0;
         w.is_curve = read_choice(r, e, {"curve"}, choice);
     }},
    {"components",
     [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_integer(r, e, 1, 16, w.curve.components); }},
    {"range", [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_pair(r, e, w.curve.range); }},
    {"outside", [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_text(r, e, w.curve.outside); }},
    {"sampled", read_samples},
    {"steps", [](KeyReader& r, const KeyedNode& e, WrittenNotes& w) { read_flag(r, e, w.curve.steps); }},
};

void read_parameters(KeyReader& reader, const KeyedNode& entry, WrittenPlugin& written) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    for (const auto& [key, node] : entries_as_written(*table)) {
        const std::string name(key->str());
        const ParameterInfo* parameter = named_parameter(reader, key->source(), name, written.plugin);
        const toml::table* keys = read_table(reader, {name.c_str(), *node});
        if (parameter == nullptr || keys == nullptr) continue;
        WrittenNotes notes{written, *parameter};
        read_keys(reader, *keys, fmt::format("[parameter.{}]", name), kNoteKeys, notes);
        if (notes.is_curve) notes.notes.curve = notes.curve;
        notes.notes.name = name;
        written.notes.parameters.push_back(std::move(notes.notes));
    }
}

void read_births(KeyReader& reader, const KeyedNode& entry, WrittenPlugin& written) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    BirthNotes births;
    const std::tuple<const char*, ParameterKind, std::string*> roles[] = {
        {"rate", ParameterKind::kFloat, &births.rate}, {"number", ParameterKind::kInt, &births.number}};
    for (const auto& [key, kind, name] : roles) {
        const toml::node* node = table->get(key);
        if (node == nullptr || !read_text(reader, {key, *node}, *name)) {
            report(reader, entry.node.source(), "births needs rate and number, both names of parameters");
            return;
        }
        const ParameterInfo* parameter = named_parameter(reader, node->source(), *name, written.plugin);
        if (parameter == nullptr) return;
        if (parameter->kind != kind)
            report(reader, node->source(), fmt::format("{} must be a parameter of kind {}", key, to_string(kind)));
    }
    written.notes.births = births;
}

const KeyRow<WrittenPlugin> kPluginKeys[] = {
    {"groups", [](KeyReader& r, const KeyedNode& e, WrittenPlugin& w) { read_texts(r, e, w.notes.groups); }},
    {"facts", [](KeyReader& r, const KeyedNode& e, WrittenPlugin& w) { read_texts(r, e, w.notes.facts); }},
    {"births", read_births},
    {"parameter", read_parameters},
};

}  // namespace

const ParameterNotes* find_notes(const PluginNotes& notes, const std::string& parameter) {
    const auto found = std::find_if(notes.parameters.begin(), notes.parameters.end(),
                                    [&](const ParameterNotes& one) { return one.name == parameter; });
    return found == notes.parameters.end() ? nullptr : &*found;
}

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
    if (!reader.errors.empty()) return error_of(reader.errors);
    return std::move(written.notes);
}

}  // namespace stage
