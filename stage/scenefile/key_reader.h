// Reads the keys of a TOML table into a plain struct and reports every mistake.
// Internal to this folder.
#pragma once

#include <toml++/toml.h>
#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "scene_description.h"

namespace stage {

/// State of reading one file. Reading continues after an error, so that one run reports all of them.
struct KeyReader {
    std::string file;                 // as given by the user
    std::filesystem::path folder;     // base of relative paths
    std::vector<std::string> errors;  // "file:line:column: what is wrong and what would be right"
    const ImageDescriptions* built_in_images =
        nullptr;  // built-in images that the file may name; null while images.toml itself is read
};

/// A value and its key.
struct KeyedNode {
    const char* key;
    const toml::node& node;
};

/// A key that a table may have. `read` stores the value or reports the mistake.
template <class T>
struct KeyRow {
    const char* key;
    void (*read)(KeyReader& reader, const KeyedNode& entry, T& out);
};

Place place_of(const KeyReader& reader, const toml::source_region& source);
void report(KeyReader& reader, const toml::source_region& source, const std::string& message);
void report_at(KeyReader& reader, const Place& place, const std::string& message);
void report_parse_error(KeyReader& reader, const toml::parse_error& error);

/// The value in words for messages: `the text "abc"`, `the number 5`, `a table`.
std::string describe(const toml::node& node);

/// The limit of all times and durations, in seconds: one day.
constexpr double kMaxSeconds = 86400.0;

/// Each function stores the value into `out` and returns true, or reports what the value must be and leaves `out`
/// unchanged. Ranges include their limits. Numbers that are not finite are rejected.
bool read_number(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum, double& out);
bool read_number(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum, float& out);
bool read_integer(KeyReader& reader, const KeyedNode& entry, int64_t minimum, int64_t maximum, int64_t& out);
bool read_integer(KeyReader& reader, const KeyedNode& entry, int32_t minimum, int32_t maximum, int32_t& out);
bool read_text(KeyReader& reader, const KeyedNode& entry, std::string& out);
/// A width, height or size: 1e-6 to 1e9 units.
bool read_length(KeyReader& reader, const KeyedNode& entry, float& out);
/// Frames per second, 1 to 1000; 29.97 is read as 30000/1001.
bool read_frame_rate(KeyReader& reader, const KeyedNode& entry, double& out);
/// true or false.
bool read_flag(KeyReader& reader, const KeyedNode& entry, bool& out);
/// [x, y, z] or [x, y], each from -1e9 to 1e9, so that matrices do not overflow float.
bool read_triple(KeyReader& reader, const KeyedNode& entry, Triple& out);
bool read_pair(KeyReader& reader, const KeyedNode& entry, std::array<float, 2>& out);
/// [red, green, blue], each 0 to 1.
bool read_color(KeyReader& reader, const KeyedNode& entry, Triple& out);
/// An existing file, relative to the folder of the scene file.
bool read_file_path(KeyReader& reader, const KeyedNode& entry, std::filesystem::path& out);
/// One of `choices`: stores its position.
bool read_choice(KeyReader& reader, const KeyedNode& entry, const std::vector<std::string>& choices, size_t& out);

/// The table that is the key's value. Reports any other value and returns null.
const toml::table* read_table(KeyReader& reader, const KeyedNode& entry);
/// The tables of the array that is the key's value ([[key]]). Reports any other value and returns none.
std::vector<const toml::table*> read_tables(KeyReader& reader, const KeyedNode& entry);

/// The entries of a table in the order of the file. The parser sorts them by name.
std::vector<std::pair<const toml::key*, const toml::node*>> entries_as_written(const toml::table& table);

void report_unknown_key(KeyReader& reader, const toml::key& key, const std::string& section,
                        const std::vector<std::string>& known);

/// rows: a range of KeyRow.
template <class Rows>
std::vector<std::string> key_names(const Rows& rows) {
    std::vector<std::string> names;
    names.reserve(std::size(rows));
    for (const auto& row : rows) names.emplace_back(row.key);
    return names;
}

/// Reads the keys of `table` in the order of `rows` (KeyRow<T>). Reports unknown keys. `section`
/// names the table in messages ("[camera]").
template <class Rows, class T>
void read_keys(KeyReader& reader, const toml::table& table, const std::string& section, const Rows& rows, T& out) {
    const std::vector<std::string> known = key_names(rows);
    for (const auto& [key, node] : entries_as_written(table)) {
        if (std::find(known.begin(), known.end(), key->str()) == known.end())
            report_unknown_key(reader, *key, section, known);
    }
    for (const auto& row : rows) {
        if (const toml::node* node = table.get(row.key)) row.read(reader, {row.key, *node}, out);
    }
}

}  // namespace stage
