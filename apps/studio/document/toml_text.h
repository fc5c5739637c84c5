// Changes single values in the text of a TOML file. All other bytes stay: comments, order, line ends.
#pragma once

#include <string>
#include <vector>

#include "stage/plugins/parameters.h"
#include "stage/result.h"

namespace tovu {

/// One step from a table to one of its values.
struct KeyStep {
    std::string key;
    int index = -1;  // of the element if the value is an array of tables

    bool operator==(const KeyStep&) const = default;
};

/// The path from the root table to a value: {{"container", 1}, {"parameters"}, {"birth_rate"}}.
using KeyPath = std::vector<KeyStep>;

/// The path as text: "container.parameters.birth_rate".
std::string name_of(const KeyPath& path);

/// A number, a boolean or a text as TOML: 2.5, 1e+07, true, "0 1 1 0". Decimal numbers have the fewest digits that give
/// the same float. Text is in double quotes on one line.
std::string toml_text_of(const stage::ParameterValue& value);

/// The text with `value` (TOML on one line) at `path`. Replaces an existing value. A new value follows the last value
/// of its table in the same style: a line, an entry of an inline table or a dotted key. A missing table gets a header
/// after the other tables of its parent.
/// Error: the text is not TOML, or a step of the path leads to a value that is not a table.
stage::Result<std::string> with_value(const std::string& text, const KeyPath& path, const std::string& value);

/// The text without the value at `path`. Removes the lines of the value with the comment at their end. The table stays,
/// even if it becomes empty. Returns the same text if the value does not exist. Error: the text is not TOML.
stage::Result<std::string> without_value(const std::string& text, const KeyPath& path);

/// Renames a key of the root table, also in all headers: [old.a] becomes [new.a]. Error: the text is not TOML.
stage::Result<std::string> with_root_key(const std::string& text, const std::string& old_key,
                                         const std::string& new_key);

/// A text value and its path.
struct WrittenText {
    KeyPath path;
    std::string value;
};

/// All text values of the file, without the elements of arrays of values. Empty if the text is not TOML.
std::vector<WrittenText> written_texts(const std::string& text);

/// The TOML text of the value at a path; empty if the value does not exist or the text is not TOML.
std::string value_at(const std::string& text, const KeyPath& path);

}  // namespace tovu
