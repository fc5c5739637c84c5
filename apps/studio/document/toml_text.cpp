#include "toml_text.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <algorithm>
#include <set>

namespace tovu {

namespace {

using stage::Error;
using stage::Result;

// A part of the text, in bytes.
struct TextRange {
    size_t begin = 0;
    size_t end = 0;
};

struct ParsedText {
    const std::string& text;
    toml::table root;
    std::vector<size_t> line_starts;
};

Result<ParsedText> parse(const std::string& text) {
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    ParsedText parsed{text, {}, {text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0}};
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n') parsed.line_starts.push_back(i + 1);
    }
    try {
        parsed.root = toml::parse(text);
    } catch (const toml::parse_error& error) {
        const toml::source_position& place = error.source().begin;
        return Error{fmt::format("{}:{}: this is not TOML: {}", place.line, place.column, error.description())};
    }
    return parsed;
}

// The byte offset of a position. Columns count code points.
size_t offset_of(const ParsedText& parsed, const toml::source_position& position) {
    const std::string& text = parsed.text;
    size_t offset = parsed.line_starts[position.line - 1];
    for (uint32_t column = 1; column < position.column; ++column) {
        ++offset;
        while (offset < text.size() && (static_cast<unsigned char>(text[offset]) & 0xc0) == 0x80) ++offset;
    }
    return offset;
}

TextRange range_of(const ParsedText& parsed, const toml::node& node) {
    return {offset_of(parsed, node.source().begin), offset_of(parsed, node.source().end)};
}

// The notation of a table.
enum class TableStyle {
    kHeader,   // [a.b] or [[a]], and the root
    kImplied,  // a in [a.b], without a header of its own
    kInline,   // { … }
    kDotted,   // a in a.b = 1
};

TableStyle style_of(const ParsedText& parsed, const toml::table& table) {
    if (&table == &parsed.root) return TableStyle::kHeader;
    if (table.is_inline()) return TableStyle::kInline;
    const size_t begin = offset_of(parsed, table.source().begin);
    if (parsed.text[begin] != '[') return TableStyle::kDotted;
    for (const auto& [key, node] : table) {  // an implied table has the source position of a table inside it
        const toml::node& first = node.is_array_of_tables() ? node.as_array()->front() : node;
        if (first.is_table() && first.source().begin == table.source().begin) return TableStyle::kImplied;
    }
    return TableStyle::kHeader;
}

bool has_headers(const toml::node& array) {
    return array.is_array_of_tables() && !array.as_array()->front().as_table()->is_inline();
}

// Whether the node is a table or an array of tables that is not one inline value.
bool is_spread(const toml::node& node) {
    return has_headers(node) || (node.is_table() && !node.as_table()->is_inline());
}

// The end of the table's last entry: under its header, between its braces or with its dotted prefix. 0 if the table has
// no entries.
size_t end_of_entries(const ParsedText& parsed, const toml::table& table) {
    size_t end = 0;
    for (const auto& [key, node] : table) {
        const toml::table* below = node.as_table();
        if (below != nullptr && style_of(parsed, *below) == TableStyle::kDotted)
            end = std::max(end, end_of_entries(parsed, *below));
        else if (!is_spread(node))
            end = std::max(end, range_of(parsed, node).end);
    }
    return end;
}

// The end of the table's entries and of its tables, without arrays of tables. A header inserted there belongs to the
// same element of each enclosing array.
size_t end_of_section(const ParsedText& parsed, const toml::table& table) {
    size_t end = end_of_entries(parsed, table);
    if (&table != &parsed.root && !table.is_inline() && style_of(parsed, table) == TableStyle::kHeader)
        end = std::max(end, range_of(parsed, table).end);
    for (const auto& [key, node] : table) {
        if (node.is_table()) end = std::max(end, end_of_section(parsed, *node.as_table()));
    }
    return end;
}

std::string text_in_quotes(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            quoted += {'\\', c};
        else if (c == '\n')
            quoted += "\\n";
        else if (c == '\t')
            quoted += "\\t";
        else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            quoted += fmt::format("\\u{:04x}", static_cast<unsigned char>(c));
        else
            quoted += c;
    }
    return quoted + '"';
}

std::string key_text(const std::string& key) {
    const bool is_bare = !key.empty() && std::all_of(key.begin(), key.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    });
    return is_bare ? key : text_in_quotes(key);
}

// The keys of the steps first…last-1, separated by dots.
std::string dotted(const KeyPath& path, size_t first, size_t last) {
    std::string text;
    for (size_t i = first; i < last; ++i) text += (text.empty() ? "" : ".") + key_text(path[i].key);
    return text;
}

// The existing tables along a path, beginning with the root, and the value if it exists.
struct Way {
    std::vector<const toml::table*> tables;
    const toml::node* value = nullptr;
};

Result<Way> walk(const ParsedText& parsed, const KeyPath& path) {
    Way way{{&parsed.root}};
    for (size_t i = 0; i < path.size(); ++i) {
        const toml::node* node = way.tables.back()->get(path[i].key);
        if (path[i].index >= 0) {
            const toml::array* array = node == nullptr ? nullptr : node->as_array();
            const auto index = static_cast<size_t>(path[i].index);
            if (array == nullptr || index >= array->size())
                return Error{fmt::format("{}[{}] does not exist", dotted(path, 0, i + 1), index)};
            node = array->get(index);
        }
        if (node == nullptr) break;
        if (i + 1 == path.size()) {
            way.value = node;
            break;
        }
        if (!node->is_table()) return Error{fmt::format("{} is not a table", dotted(path, 0, i + 1))};
        way.tables.push_back(node->as_table());
    }
    return way;
}

std::string new_line_of(const std::string& text) {
    return text.find("\r\n") == std::string::npos ? "\n" : "\r\n";
}

size_t line_start(const std::string& text, size_t offset, size_t first) {
    const size_t before = offset == 0 ? std::string::npos : text.rfind('\n', offset - 1);
    return before == std::string::npos ? first : before + 1;
}

// The end of the line of `offset`, before its line break.
size_t line_end(const std::string& text, size_t offset) {
    const size_t end = std::min(text.find('\n', offset), text.size());
    return end > offset && text[end - 1] == '\r' ? end - 1 : end;
}

size_t skip_blanks(const std::string& text, size_t offset) {
    return std::min(text.find_first_not_of(" \t\r\n", offset), text.size());
}

// The end of the comment at the top of the file.
size_t end_of_title(const ParsedText& parsed) {
    size_t offset = parsed.line_starts[0];
    while (offset < parsed.text.size() && parsed.text[offset] == '#')
        offset = std::min(parsed.text.find('\n', offset), parsed.text.size() - 1) + 1;
    return offset;
}

std::string with_lines_at_top(const ParsedText& parsed, const std::string& lines) {
    const std::string new_line = new_line_of(parsed.text);
    const size_t offset = end_of_title(parsed);
    std::string text = parsed.text;
    const bool needs_end = offset > parsed.line_starts[0] && text[offset - 1] != '\n';
    const bool is_tight = offset < text.size() && text[offset] != '\n' && text[offset] != '\r';
    return text.insert(offset, (needs_end ? new_line : "") + lines + new_line + (is_tight ? new_line : ""));
}

// Inserts lines after the line of `offset`.
std::string with_lines_behind(const std::string& text, size_t offset, const std::string& lines) {
    return std::string(text).insert(line_end(text, offset), new_line_of(text) + lines);
}

// Inserts a line after the table's last entry, with the same indentation.
std::string with_line_in(const ParsedText& parsed, const toml::table& table, const std::string& line) {
    const std::string& text = parsed.text;
    size_t end = end_of_entries(parsed, table);
    if (end == 0 && &table == &parsed.root) return with_lines_at_top(parsed, line);
    if (end == 0) end = range_of(parsed, table).end;
    const size_t start = line_start(text, end, parsed.line_starts[0]);
    const size_t indent = std::min(text.find_first_not_of(" \t", start), end) - start;
    const bool is_entry = text[start + indent] != ']' && text[start + indent] != '}';
    return with_lines_behind(text, end, (is_entry ? text.substr(start, indent) : "") + line);
}

std::string with_entry_in(const ParsedText& parsed, const toml::table& inline_table, const std::string& entry) {
    std::string text = parsed.text;
    if (const size_t end = end_of_entries(parsed, inline_table); end > 0) return text.insert(end, ", " + entry);
    const TextRange range = range_of(parsed, inline_table);
    return text.replace(range.begin, range.end - range.begin, "{ " + entry + " }");
}

// Inserts the value with a new header for its table. nearest: the last existing table of the path.
std::string with_table(const ParsedText& parsed, const KeyPath& path, const toml::table& nearest,
                       const std::string& value) {
    const bool is_of_array = std::any_of(path.begin(), path.end(), [](const KeyStep& s) { return s.index >= 0; });
    const std::string new_line = new_line_of(parsed.text);
    const std::string lines =
        fmt::format("[{}]{}{} = {}", dotted(path, 0, path.size() - 1), new_line, key_text(path.back().key), value);
    const size_t end = end_of_section(parsed, nearest);
    if (end == 0) return with_lines_at_top(parsed, lines);
    return with_lines_behind(parsed.text, end, (is_of_array ? "" : new_line) + lines);
}

std::string with_new_value(const ParsedText& parsed, const KeyPath& path, const Way& way, const std::string& value) {
    const size_t known = way.tables.size() - 1;  // number of steps whose tables exist
    size_t prefix = known;                       // first step of the dotted key of the table
    while (style_of(parsed, *way.tables[prefix]) == TableStyle::kDotted) --prefix;
    const toml::table& nearest = *way.tables[known];
    const toml::table& owner = *way.tables[prefix];
    const TableStyle style = style_of(parsed, owner);
    if (style == TableStyle::kInline) {
        std::string entry = dotted(path, prefix, known + 1) + " = ";
        for (size_t i = known + 1; i < path.size(); ++i) entry += "{ " + key_text(path[i].key) + " = ";
        entry += value;
        for (size_t i = known + 1; i < path.size(); ++i) entry += " }";
        return with_entry_in(parsed, owner, entry);
    }
    if (prefix < known)  // insert after the last dotted key of the table
        return with_line_in(parsed, nearest, dotted(path, prefix, path.size()) + " = " + value);
    if (style == TableStyle::kHeader && known + 1 == path.size())
        return with_line_in(parsed, owner, key_text(path.back().key) + " = " + value);
    return with_table(parsed, path, nearest, value);
}

std::string without_entry(const ParsedText& parsed, const toml::table& inline_table, const toml::node& value) {
    std::string text = parsed.text;
    const TextRange table = range_of(parsed, inline_table);
    const size_t end = range_of(parsed, value).end;
    const size_t next = skip_blanks(text, end);
    size_t before = 0;  // end of the previous entry; 0 if there is none
    const auto look_before = [&](const auto& self, const toml::table& entries) -> void {
        for (const auto& [key, node] : entries) {
            const toml::table* below = node.as_table();
            if (below != nullptr && !below->is_inline())
                self(self, *below);
            else if (const size_t other = range_of(parsed, node).end; other < end)
                before = std::max(before, other);
        }
    };
    look_before(look_before, inline_table);
    if (before > 0) return text.erase(before, end - before);
    if (text[next] != ',') return text.replace(table.begin, table.end - table.begin, "{}");
    const size_t first = skip_blanks(text, table.begin + 1);
    return text.erase(first, skip_blanks(text, next + 1) - first);
}

std::string without_lines(const ParsedText& parsed, const TextRange& value) {
    const std::string& text = parsed.text;
    const size_t start = line_start(text, value.begin, parsed.line_starts[0]);
    const size_t end = std::min(text.find('\n', value.end), text.size() - 1) + 1;
    return text.substr(0, start) + text.substr(end);
}

// Removes the last dotted key of a table. An empty inline table remains, so that the table still exists.
std::string with_empty_table(const ParsedText& parsed, const std::string& table_key, const TextRange& value) {
    const std::string& text = parsed.text;
    const size_t start = line_start(text, value.begin, parsed.line_starts[0]);
    const size_t entry = text.find_first_not_of(" \t", start);
    return text.substr(0, entry) + table_key + " = {}" + text.substr(value.end);
}

void collect_texts(const toml::node& node, KeyPath& path, std::vector<WrittenText>& texts) {
    if (const auto* text = node.as_string()) texts.push_back({path, text->get()});
    if (const toml::table* table = node.as_table()) {
        for (const auto& [key, value] : *table) {
            path.push_back({std::string(key.str())});
            collect_texts(value, path, texts);
            path.pop_back();
        }
    }
    if (!node.is_array_of_tables()) return;
    const toml::array& array = *node.as_array();
    for (size_t i = 0; i < array.size(); ++i) {
        path.back().index = static_cast<int>(i);
        collect_texts(array[i], path, texts);
    }
    path.back().index = -1;
}

// The length of a bare key or of a quoted key without escapes.
size_t key_length(const std::string& text, size_t begin) {
    const bool is_quoted = text[begin] == '"' || text[begin] == '\'';
    if (is_quoted) return text.find(text[begin], begin + 1) + 1 - begin;
    return text.find_first_of(" \t.]=", begin) - begin;
}

// Collects the offsets of the headers of the node and of all tables inside it.
void collect_headers(const ParsedText& parsed, const toml::node& node, std::set<size_t>& begins) {
    if (const size_t begin = range_of(parsed, node).begin; node.is_table() && parsed.text[begin] == '[')
        begins.insert(begin);
    if (const toml::table* table = node.as_table()) {
        for (const auto& [key, value] : *table) collect_headers(parsed, value, begins);
    }
    if (!node.is_array_of_tables()) return;
    for (const toml::node& element : *node.as_array()) collect_headers(parsed, element, begins);
}

Result<std::string> checked(std::string text) {
    if (const Result<ParsedText> parsed = parse(text); !parsed) return parsed.error();
    return text;
}

}  // namespace

std::string name_of(const KeyPath& path) {
    return dotted(path, 0, path.size());
}

std::string toml_text_of(const stage::ParameterValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return text_in_quotes(*text);
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "true" : "false";
    if (const auto* whole = std::get_if<int>(&value)) return fmt::format("{}", *whole);
    return fmt::format("{}", static_cast<float>(std::get<double>(value)));
}

Result<std::string> with_value(const std::string& text, const KeyPath& path, const std::string& value) {
    const Result<ParsedText> parsed = parse(text);
    if (!parsed) return parsed.error();
    const Result<Way> way = walk(*parsed, path);
    if (!way) return way.error();
    if (way->value == nullptr) return checked(with_new_value(*parsed, path, *way, value));
    if (is_spread(*way->value)) return Error{fmt::format("{} is a table", name_of(path))};
    const TextRange range = range_of(*parsed, *way->value);
    return checked(std::string(text).replace(range.begin, range.end - range.begin, value));
}

Result<std::string> without_value(const std::string& text, const KeyPath& path) {
    const Result<ParsedText> parsed = parse(text);
    if (!parsed) return parsed.error();
    const Result<Way> way = walk(*parsed, path);
    if (!way) return way.error();
    if (way->value == nullptr) return text;
    if (is_spread(*way->value)) return Error{fmt::format("{} is a table", name_of(path))};
    size_t owner = way->tables.size() - 1;
    while (style_of(*parsed, *way->tables[owner]) == TableStyle::kDotted) --owner;
    const TextRange range = range_of(*parsed, *way->value);
    if (way->tables[owner]->is_inline()) return checked(without_entry(*parsed, *way->tables[owner], *way->value));
    if (owner + 1 < way->tables.size() && way->tables.back()->size() == 1)
        return checked(with_empty_table(*parsed, dotted(path, owner, path.size() - 1), range));
    return checked(without_lines(*parsed, range));
}

Result<std::string> with_root_key(const std::string& text, const std::string& old_key, const std::string& new_key) {
    const Result<ParsedText> parsed = parse(text);
    if (!parsed) return parsed.error();
    const auto found = parsed->root.find(old_key);
    if (found == parsed->root.cend()) return text;
    std::set<size_t> begins;
    collect_headers(*parsed, found->second, begins);
    if (begins.empty()) begins.insert(offset_of(*parsed, found->first.source().begin));
    std::string renamed = text;
    for (auto begin = begins.rbegin(); begin != begins.rend(); ++begin) {
        const size_t key = text.find_first_not_of("[ \t", *begin);
        renamed.replace(key, key_length(text, key), new_key);
    }
    return checked(renamed);
}

std::vector<WrittenText> written_texts(const std::string& text) {
    std::vector<WrittenText> texts;
    KeyPath path;
    if (const Result<ParsedText> parsed = parse(text)) collect_texts(parsed->root, path, texts);
    return texts;
}

std::string value_at(const std::string& text, const KeyPath& path) {
    const Result<ParsedText> parsed = parse(text);
    if (!parsed) return "";
    const Result<Way> way = walk(*parsed, path);
    if (!way || way->value == nullptr || is_spread(*way->value)) return "";
    const TextRange range = range_of(*parsed, *way->value);
    return text.substr(range.begin, range.end - range.begin);
}

}  // namespace tovu
