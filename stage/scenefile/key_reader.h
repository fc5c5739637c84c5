// Reading the keys of a TOML table into a plain struct, with an error for everything that is not right.
// Only for the scene file's own readers: others take the finished description.
#pragma once

#include <toml++/toml.h>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "scene_description.h"

namespace stage {

/// What goes through all readers of one file. Reading goes on after an error, so that one run reports all of them.
struct KeyReader {
    std::string file;                 // as the user gave it
    std::filesystem::path folder;     // where relative paths start
    std::vector<std::string> errors;  // "file:line:column: what is wrong and what would be right"
};

/// One value and the key that it was given for.
struct KeyedNode {
    const char* key;
    const toml::node& node;
};

/// One key that a table may have. `read` stores the value, or reports what is wrong with it.
template <class T>
struct KeyRow {
    const char* key;
    void (*read)(KeyReader& reader, const KeyedNode& entry, T& out);
};

Place place_of(const KeyReader& reader, const toml::source_region& source);
void report(KeyReader& reader, const toml::source_region& source, const std::string& message);
void report_at(KeyReader& reader, const Place& place, const std::string& message);

/// `the text "abc"`, `the number 5`, `a table`: what stands there instead of what would be right.
std::string describe(const toml::node& node);

/// Each stores the value into `out` and returns true, or reports that the key must be a … (in the given range, limits
/// included) and leaves `out` alone. Numbers that are not finite are refused.
bool read_number(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum, double& out);
bool read_number(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum, float& out);
bool read_integer(KeyReader& reader, const KeyedNode& entry, int64_t minimum, int64_t maximum, int64_t& out);
bool read_text(KeyReader& reader, const KeyedNode& entry, std::string& out);
bool read_triple(KeyReader& reader, const KeyedNode& entry, double minimum, double maximum, Triple& out);
bool read_pair(KeyReader& reader, const KeyedNode& entry, std::array<float, 2>& out);
/// A file that exists, relative to the scene file's folder.
bool read_file_path(KeyReader& reader, const KeyedNode& entry, std::filesystem::path& out);
/// One of `choices`: stores its position.
bool read_choice(KeyReader& reader, const KeyedNode& entry, const std::vector<std::string>& choices, size_t& out);

/// The table behind the key, or nothing after reporting that it must be one.
const toml::table* read_table(KeyReader& reader, const KeyedNode& entry);
/// The array of tables behind the key ([[key]]), or nothing after reporting.
std::vector<const toml::table*> read_tables(KeyReader& reader, const KeyedNode& entry);

/// The entries of a table in the order they were written (the parser keeps them by name).
std::vector<std::pair<const toml::key*, const toml::node*>> entries_as_written(const toml::table& table);

void report_unknown_key(KeyReader& reader, const toml::key& key, const std::string& section,
                        const std::vector<std::string>& known);

template <class T, size_t N>
std::vector<std::string> key_names(const KeyRow<T> (&rows)[N]) {
    std::vector<std::string> names;
    for (const KeyRow<T>& row : rows) names.emplace_back(row.key);
    return names;
}

/// Reads the keys of `table` in the order of `rows`; reports every key that is not among them. `section` names the
/// table in messages ("[camera]").
template <class T, size_t N>
void read_keys(KeyReader& reader, const toml::table& table, const std::string& section, const KeyRow<T> (&rows)[N],
               T& out) {
    const std::vector<std::string> known = key_names(rows);
    for (const auto& [key, node] : entries_as_written(table)) {
        bool found = false;
        for (const std::string& name : known) found = found || name == key->str();
        if (!found) report_unknown_key(reader, *key, section, known);
    }
    for (const KeyRow<T>& row : rows) {
        if (const toml::node* node = table.get(row.key)) row.read(reader, {row.key, *node}, out);
    }
}

}  // namespace stage
