#include "key_reader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

#include "stage/frame_rate.h"
#include "stage/names.h"

namespace stage {

namespace {

constexpr double kMinLength = 1e-6;
constexpr double kMaxCoordinate = 1e9;

bool is_number_within(const toml::node& node, double minimum, double maximum, double& out) {
    if (!node.is_number()) return false;
    const double value =
        node.is_integer() ? static_cast<double>(node.as_integer()->get()) : node.as_floating_point()->get();
    if (!std::isfinite(value) || value < minimum || value > maximum) return false;
    out = value;
    return true;
}

// names: the names of the numbers, such as "x, y, z".
template <size_t count>
bool read_numbers(KeyReader& reader, const KeyedNode& entry, const char* names, double minimum, double maximum,
                  std::array<float, count>& out) {
    const toml::array* array = entry.node.as_array();
    std::array<float, count> values{};
    bool right = array != nullptr && array->size() == count;
    for (size_t i = 0; right && i < count; ++i) {
        double value = 0.0;
        right = is_number_within(*array->get(i), minimum, maximum, value);
        values[i] = static_cast<float>(value);
    }
    if (!right) {
        report(reader, entry.node.source(),
               fmt::format("{} must be [{}] with {} numbers from {} to {}, not {}", entry.key, names,
                           count == 3 ? "three" : "two", minimum, maximum, describe(entry.node)));
        return false;
    }
    out = values;
    return true;
}

}  // namespace

Place place_of(const KeyReader& reader, const toml::source_region& source) {
    return fmt::format("{}:{}:{}", reader.file, source.begin.line, source.begin.column);
}

void report(KeyReader& reader, const toml::source_region& source, const std::string& message) {
    report_at(reader, place_of(reader, source), message);
}

void report_at(KeyReader& reader, const Place& place, const std::string& message) {
    reader.errors.push_back(place + ": " + message);
}

void report_parse_error(KeyReader& reader, const toml::parse_error& error) {
    const bool wrong_bytes = error.description().find("utf-8") != std::string_view::npos;
    report(reader, error.source(),
           wrong_bytes ? "this is not text in UTF-8: save the file in that encoding"
                       : fmt::format("this is not TOML: {}", error.description()));
}

std::string describe(const toml::node& node) {
    if (const auto* text = node.as_string()) return fmt::format("the text \"{}\"", text->get());
    if (const auto* number = node.as_integer()) return fmt::format("the number {}", number->get());
    if (const auto* number = node.as_floating_point()) return fmt::format("the number {}", number->get());
    if (const auto* flag = node.as_boolean()) return flag->get() ? "true" : "false";
    if (node.is_table()) return "a table";
    if (const toml::array* array = node.as_array()) {
        std::vector<std::string> elements;
        for (const toml::node& element : *array) elements.push_back(describe(element));
        if (elements.size() > 4) return fmt::format("an array of {} values", elements.size());
        return fmt::format("an array of {}",
                           elements.empty() ? "nothing" : fmt::format("{}", fmt::join(elements, ", ")));
    }
    return "a date or time";
}

bool read_number(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum, double& out) {
    if (is_number_within(entry.node, minimum, maximum, out)) return true;
    report(reader, entry.node.source(),
           fmt::format("{} must be a number from {} to {}, not {}", entry.key, minimum, maximum, describe(entry.node)));
    return false;
}

bool read_number(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum, float& out) {
    double value = 0.0;
    if (!read_number(reader, entry, minimum, maximum, value)) return false;
    out = static_cast<float>(value);
    return true;
}

bool read_integer(KeyReader& reader, const KeyedNode& entry, int64_t minimum, int64_t maximum, int64_t& out) {
    const auto* number = entry.node.as_integer();
    if (number == nullptr || number->get() < minimum || number->get() > maximum) {
        report(reader, entry.node.source(),
               fmt::format("{} must be a whole number from {} to {}, not {}", entry.key, minimum, maximum,
                           describe(entry.node)));
        return false;
    }
    out = number->get();
    return true;
}

bool read_integer(KeyReader& reader, const KeyedNode& entry, int32_t minimum, int32_t maximum, int32_t& out) {
    int64_t value = 0;
    if (!read_integer(reader, entry, int64_t{minimum}, int64_t{maximum}, value)) return false;
    out = static_cast<int32_t>(value);
    return true;
}

bool read_text(KeyReader& reader, const KeyedNode& entry, std::string& out) {
    const auto* text = entry.node.as_string();
    if (text == nullptr || text->get().empty()) {
        report(reader, entry.node.source(),
               fmt::format("{} must be a text in quotes, not {}", entry.key,
                           text ? "an empty one" : describe(entry.node)));
        return false;
    }
    out = text->get();
    return true;
}

bool read_frame_rate(KeyReader& reader, const KeyedNode& entry, double& out) {
    if (!read_number(reader, entry, 1.0, 1000.0, out)) return false;
    out = exact_frame_rate(out);
    return true;
}

bool read_flag(KeyReader& reader, const KeyedNode& entry, bool& out) {
    const auto* flag = entry.node.as_boolean();
    if (flag == nullptr) {
        report(reader, entry.node.source(),
               fmt::format("{} must be true or false, not {}", entry.key, describe(entry.node)));
        return false;
    }
    out = flag->get();
    return true;
}

bool read_length(KeyReader& reader, const KeyedNode& entry, float& out) {
    return read_number(reader, entry, kMinLength, kMaxCoordinate, out);
}

bool read_triple(KeyReader& reader, const KeyedNode& entry, Triple& out) {
    return read_numbers(reader, entry, "x, y, z", -kMaxCoordinate, kMaxCoordinate, out);
}

bool read_pair(KeyReader& reader, const KeyedNode& entry, std::array<float, 2>& out) {
    return read_numbers(reader, entry, "x, y", -kMaxCoordinate, kMaxCoordinate, out);
}

bool read_color(KeyReader& reader, const KeyedNode& entry, Triple& out) {
    return read_numbers(reader, entry, "red, green, blue", 0.0, 1.0, out);
}

bool read_file_path(KeyReader& reader, const KeyedNode& entry, std::filesystem::path& out) {
    std::string written;
    if (!read_text(reader, entry, written)) return false;
    const std::filesystem::path file = (reader.folder / written).lexically_normal();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) {
        report(reader, entry.node.source(),
               fmt::format("{}: there is no file '{}'; relative paths start from the folder of the file that names it",
                           entry.key, file.string()));
        return false;
    }
    out = file;
    return true;
}

bool read_choice(KeyReader& reader, const KeyedNode& entry, const std::vector<std::string>& choices, size_t& out) {
    const auto* text = entry.node.as_string();
    const auto found = text ? std::find(choices.begin(), choices.end(), text->get()) : choices.end();
    if (found == choices.end()) {
        report(reader, entry.node.source(),
               fmt::format("{} must be one of \"{}\", not {}", entry.key, fmt::join(choices, "\", \""),
                           describe(entry.node)));
        return false;
    }
    out = static_cast<size_t>(found - choices.begin());
    return true;
}

const toml::table* read_table(KeyReader& reader, const KeyedNode& entry) {
    if (!entry.node.is_table())
        report(reader, entry.node.source(),
               fmt::format("{} must be a table, written [{}] or {{ … }}, not {}", entry.key, entry.key,
                           describe(entry.node)));
    return entry.node.as_table();
}

std::vector<const toml::table*> read_tables(KeyReader& reader, const KeyedNode& entry) {
    std::vector<const toml::table*> tables;
    const toml::array* array = entry.node.as_array();
    if (array == nullptr) {
        report(reader, entry.node.source(),
               fmt::format("{} must be an array of tables, written [[{}]], not {}", entry.key, entry.key,
                           describe(entry.node)));
        return tables;
    }
    for (const toml::node& element : *array) {
        if (element.is_table())
            tables.push_back(element.as_table());
        else
            report(reader, element.source(),
                   fmt::format("{} must hold tables only, not {}", entry.key, describe(element)));
    }
    return tables;
}

std::vector<std::pair<const toml::key*, const toml::node*>> entries_as_written(const toml::table& table) {
    std::vector<std::pair<const toml::key*, const toml::node*>> entries;
    for (auto it = table.cbegin(); it != table.cend(); ++it) entries.emplace_back(&it->first, &it->second);
    const auto before = [](const auto& a, const auto& b) {
        const toml::source_position& first = a.first->source().begin;
        const toml::source_position& second = b.first->source().begin;
        return std::pair(first.line, first.column) < std::pair(second.line, second.column);
    };
    std::stable_sort(entries.begin(), entries.end(), before);
    return entries;
}

void report_unknown_key(KeyReader& reader, const toml::key& key, const std::string& section,
                        const std::vector<std::string>& known) {
    report(reader, key.source(),
           fmt::format("unknown key '{}' in {}: {}", key.str(), section, name_hint(key.str(), known)));
}

}  // namespace stage
