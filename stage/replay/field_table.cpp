#include "field_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "stage/names.h"

namespace stage {
namespace {

struct TypeRow {
    const char* name;
    FieldType type;
    size_t bytes;
    size_t alignment;
};

// Some 32-bit platforms align a double to 4 bytes inside of a structure.
struct DoubleInside {
    char before;
    double value;
};

constexpr TypeRow kTypes[] = {
    {"uint8", FieldType::kUint8, 1, 1},
    {"int32", FieldType::kInt32, 4, 4},
    {"float32", FieldType::kFloat32, 4, 4},
    {"float64", FieldType::kFloat64, 8, offsetof(DoubleInside, value)},
    {"text", FieldType::kText, 1, 1},
    {"list", FieldType::kList, sizeof(void*), sizeof(void*)},
    {"link", FieldType::kLink, sizeof(void*), sizeof(void*)},
    {"pointer", FieldType::kPointer, sizeof(void*), sizeof(void*)},
};

/// The state of reading a file.
struct Reader {
    const Plugin& plugin;
    FieldTable table;
    std::vector<Field>* part = nullptr;  // current part of the table; null before the first heading
    size_t end = 0;                      // offset of the end of its last field
};

using Words = std::vector<std::string>;

size_t aligned(size_t offset, size_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

std::string begin_part(Reader& reader, const std::string& heading) {
    reader.part = heading == "block" ? &reader.table.block : &reader.table.record;
    reader.end = heading == "block" ? 4 * reader.plugin.parameters.size() : 0;
    return reader.part->empty() ? "" : fmt::format("'{}' is given twice", heading);
}

/// Reads "TYPE" or "TYPE[COUNT]". Returns an error message, or empty.
std::string take_type(const std::string& word, const TypeRow*& type, size_t& count) {
    const size_t bracket = std::min(word.find('['), word.size());
    const std::string name = word.substr(0, bracket);
    const auto row =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const auto& one) { return one.name == name; });
    if (row == std::end(kTypes)) {
        std::vector<std::string> known = {"align"};
        for (const TypeRow& one : kTypes) known.push_back(one.name);
        return fmt::format("unknown type '{}': {}", name, name_hint(name, known));
    }
    type = row;
    count = 1;
    if (bracket == word.size()) return "";
    const auto [end, error] = std::from_chars(word.data() + bracket + 1, word.data() + word.size(), count);
    const bool right = error == std::errc() && std::string_view(end) == "]" && count >= 1 && count <= 1'000'000;
    return right ? "" : fmt::format("the count of '{}' must be a whole number from 1 to 1000000 in brackets", word);
}

std::string take_reference(const Reader& reader, const std::string& name, bool is_zero, Field& field) {
    if (const ParameterInfo* parameter = find_parameter(reader.plugin, name)) {
        field.conditions.push_back({4 * static_cast<size_t>(parameter->index), 4, is_zero});
        return "";
    }
    for (const Field& earlier : reader.table.block) {
        const bool is_whole = earlier.type == FieldType::kUint8 || earlier.type == FieldType::kInt32;
        if (earlier.name != name || !is_whole) continue;
        field.conditions.push_back({earlier.offset, earlier.type == FieldType::kUint8 ? size_t{1} : 4, is_zero});
        return "";
    }
    return fmt::format("'{}' is neither a parameter nor an earlier int32 or uint8 of the block", name);
}

/// Reads the words TYPE NAME CONDITION …. Returns an error message, or empty.
std::string take_field(Reader& reader, const Words& words) {
    const TypeRow* type = nullptr;
    Field field{};
    if (std::string wrong = take_type(words[0], type, field.count); !wrong.empty()) return wrong;
    if (words.size() < 2) return "the field has no name";
    field.name = words[1];
    field.type = type->type;
    for (size_t i = 2; i < words.size(); ++i) {
        const bool refers = words[i] == "if" || words[i] == "unless";
        if (words[i] == "never")
            field.never = true;
        else if (words[i] == "live")
            field.live = true;
        else if (!refers || i + 1 == words.size())
            return fmt::format("'{}' is not a condition; conditions are if NAME, unless NAME, live and never",
                               words[i]);
        else if (std::string wrong = take_reference(reader, words[i + 1], words[i] == "unless", field); !wrong.empty())
            return wrong;
        if (refers) ++i;
    }
    field.offset = aligned(reader.end, type->alignment);
    reader.end = field.offset + field.count * type->bytes;
    if (reader.part == &reader.table.block && reader.end > static_cast<size_t>(reader.plugin.total_size))
        return fmt::format("'{}' ends at byte {}, beyond the block of {} bytes", field.name, reader.end,
                           reader.plugin.total_size);
    reader.part->push_back(std::move(field));
    return "";
}

std::string take_line(Reader& reader, const Words& words) {
    if (words.size() == 1 && (words[0] == "block" || words[0] == "record")) return begin_part(reader, words[0]);
    if (!reader.part) return "the first line must be 'block' or 'record'";
    if (words.size() == 1 && words[0] == "align") {
        reader.end = aligned(reader.end, alignof(void*));
        return "";
    }
    return take_field(reader, words);
}

bool has(const std::vector<Field>& fields, FieldType type) {
    return std::any_of(fields.begin(), fields.end(), [type](const Field& field) { return field.type == type; });
}

Words words_of(const std::string& line) {
    std::istringstream stream(line.substr(0, line.find('#')));
    return {std::istream_iterator<std::string>(stream), {}};
}

}  // namespace

Result<FieldTable> read_field_table(const Plugin& plugin) {
    const std::filesystem::path file = std::filesystem::path(plugin.path).parent_path() / (plugin.name + ".fields");
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) return FieldTable{};
    std::ifstream stream(file);
    Reader reader{plugin, {}};
    int number = 1;
    for (std::string line; std::getline(stream, line); ++number) {
        const Words words = words_of(line);
        if (words.empty()) continue;
        if (const std::string wrong = take_line(reader, words); !wrong.empty())
            return Error{fmt::format("{}:{}: {}", file.string(), number, wrong)};
    }
    if (has(reader.table.block, FieldType::kList) && !has(reader.table.record, FieldType::kLink))
        return Error{fmt::format("{}:{}: the block has lists, and no record has a link", file.string(), number)};
    return std::move(reader.table);
}

}  // namespace stage
