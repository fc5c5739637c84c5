#include "key_reader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

#include "stage/names.h"

namespace stage {

namespace {

constexpr double kUnlimited = 1e30;  // limits beyond which a range is not worth telling

std::string range_text(double minimum, double maximum) {
    if (minimum <= -kUnlimited && maximum >= kUnlimited) return "";
    if (maximum >= kUnlimited) return fmt::format(" of {} or more", minimum);
    return fmt::format(" from {} to {}", minimum, maximum);
}

bool is_number_within(const toml::node& node, double minimum, double maximum, double& out) {
    if (!node.is_number()) return false;
    const double value =
        node.is_integer() ? static_cast<double>(node.as_integer()->get()) : node.as_floating_point()->get();
    if (!std::isfinite(value) || value < minimum || value > maximum) return false;
    out = value;
    return true;
}

template <size_t N>
bool read_numbers(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum,
                  std::array<float, N>& out) {
    const toml::array* array = entry.node.as_array();
    std::array<float, N> values{};
    bool right = array != nullptr && array->size() == N;
    for (size_t i = 0; right && i < N; ++i) {
        double value = 0.0;
        right = is_number_within(*array->get(i), minimum, maximum, value);
        values[i] = static_cast<float>(value);
    }
    if (!right) {
        report(reader, entry.node.source(),
               fmt::format("{} must be [{}] with {} numbers{}, not {}", entry.key, N == 3 ? "x, y, z" : "x, y",
                           N == 3 ? "three" : "two", range_text(minimum, maximum), describe(entry.node)));
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
           fmt::format("{} must be a number{}, not {}", entry.key, range_text(minimum, maximum), describe(entry.node)));
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

bool read_triple(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum, Triple& out) {
    return read_numbers(reader, entry, minimum, maximum, out);
}

bool read_pair(KeyReader& reader, const KeyedNode& entry, std::array<float, 2>& out) {
    return read_numbers(reader, entry, -kUnlimited, kUnlimited, out);
}

bool read_file_path(KeyReader& reader, const KeyedNode& entry, std::filesystem::path& out) {
    std::string written;
    if (!read_text(reader, entry, written)) return false;
    const std::filesystem::path file = (reader.folder / written).lexically_normal();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) {
        report(reader, entry.node.source(),
               fmt::format("{}: there is no file '{}'; relative paths start from the scene file's folder", entry.key,
                           file.string()));
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
