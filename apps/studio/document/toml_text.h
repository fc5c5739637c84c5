// Changes of single values in the text of a TOML file: all other bytes stay, comments, order and line ends included.
#pragma once

#include <string>
#include <vector>

#include "stage/plugins/parameters.h"
#include "stage/result.h"

namespace tovu {

/// One step from a table to a value in it.
struct KeyStep {
    std::string key;
    int index = -1;  // of an element, when the key's value is an array of tables

    bool operator==(const KeyStep&) const = default;
};

/// From the root table to a value: {{"container", 1}, {"parameters"}, {"birth_rate"}}.
using KeyPath = std::vector<KeyStep>;

/// "container.parameters.birth_rate".
std::string name_of(const KeyPath& path);

/// A number, true, false or a text as TOML: 2.5, 1e+07, true, "0 1 1 0". Decimal numbers have the fewest digits that
/// give the same float; text is in double quotes on one line.
std::string toml_text_of(const stage::ParameterValue& value);

/// The text with `value` (TOML, on one line) at `path`, which replaces the value that stands there. A new one goes
/// behind the last value of its table, in the same style: a line, an entry of an inline table, a dotted key. A missing
/// table gets a header behind the tables that belong to the same one.
/// Error: the text is not TOML, or a step of the path leads through something that is no table.
stage::Result<std::string> with_value(const std::string& text, const KeyPath& path, const std::string& value);

/// The text without the value at `path`: its lines go, with the comment behind it. Its table stays, even empty. Returns
/// the same text when there is no such value. Error: the text is not TOML.
stage::Result<std::string> without_value(const std::string& text, const KeyPath& path);

/// The text with another name for a key of the root table, in all headers too: [old.a] becomes [new.a].
stage::Result<std::string> with_root_key(const std::string& text, const std::string& old_key,
                                         const std::string& new_key);

/// A text value and the path to it.
struct WrittenText {
    KeyPath path;
    std::string value;
};

/// All text values of the file that are no elements of arrays of values; none when it is not TOML.
std::vector<WrittenText> written_texts(const std::string& text);

/// The value at a path as written; empty for none, and when the text is not TOML.
std::string value_at(const std::string& text, const KeyPath& path);

}  // namespace tovu
