#include "frame_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace stage {
namespace {

/// The %d, %4d or %04d of a pattern.
struct NumberField {
    size_t length = 0;  // characters, % and d included
    int width = 0;
    bool zeros = false;
};

/// Reads the field at the start of `text`, which starts with %. Length 0 if it is not a number field.
NumberField parse_field(std::string_view text) {
    NumberField field;
    size_t at = 1;
    if (at < text.size() && text[at] == '0') {
        field.zeros = true;
        ++at;
    }
    if (at < text.size() && text[at] >= '1' && text[at] <= '9') field.width = text[at++] - '0';
    if (field.zeros && field.width == 0) return {};
    if (at >= text.size() || text[at] != 'd') return {};
    field.length = at + 1;
    return field;
}

/// A parsed pattern: the texts before and after its number, with each %% replaced by %.
struct FramePattern {
    std::string before;
    std::string after;
    NumberField field;
};

Result<FramePattern> parse_pattern(const std::string& pattern) {
    const Error malformed{pattern + ": must contain exactly one number such as %04d; a percent sign is written %%"};
    FramePattern parsed;
    for (size_t at = 0; at < pattern.size();) {
        std::string& text = parsed.field.length == 0 ? parsed.before : parsed.after;
        if (pattern[at] != '%') {
            text += pattern[at++];
        } else if (pattern.compare(at, 2, "%%") == 0) {
            text += '%';
            at += 2;
        } else {
            const NumberField field = parse_field(std::string_view(pattern).substr(at));
            if (field.length == 0 || parsed.field.length != 0) return malformed;
            parsed.field = field;
            at += field.length;
        }
    }
    return parsed.field.length == 0 ? Result<FramePattern>(malformed) : parsed;
}

std::string name_of(const FramePattern& pattern, int number) {
    const NumberField& field = pattern.field;
    return pattern.before +
           (field.zeros ? fmt::format("{:0{}}", number, field.width) : fmt::format("{:{}}", number, field.width)) +
           pattern.after;
}

/// The number for which the pattern gives this name, or -1.
int number_in(const FramePattern& pattern, const std::string& name) {
    const size_t around = pattern.before.size() + pattern.after.size();
    if (name.size() <= around || !name.starts_with(pattern.before)) return -1;
    std::string_view digits = std::string_view(name).substr(pattern.before.size(), name.size() - around);
    digits.remove_prefix(std::min(digits.find_first_not_of(' '), digits.size()));
    int number = -1;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number >= 0 && name_of(pattern, number) == name ? number : -1;
}

NumberedFiles files_in(const std::filesystem::path& folder, const FramePattern& pattern) {
    NumberedFiles found;
    std::error_code code;
    std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, code);
    for (; !code && entry != std::filesystem::directory_iterator(); entry.increment(code)) {
        const std::string name = entry->path().filename().string();
        std::error_code ignored;
        if (const int number = number_in(pattern, name); number >= 0 && entry->is_regular_file(ignored))
            found[number] = folder / name;
    }
    return found;
}

}  // namespace

bool is_frame_pattern(const std::string& name) {
    return name.find('%') != std::string::npos;
}

Result<std::filesystem::path> frame_name(const std::string& pattern, int number) {
    const Result<FramePattern> parsed = parse_pattern(pattern);
    if (!parsed) return parsed.error();
    if (number < 0) return Error{fmt::format("{}: there is no frame {}", pattern, number)};
    return std::filesystem::path(name_of(*parsed, number));
}

int frame_number(const std::string& pattern, const std::string& file_name) {
    const Result<FramePattern> parsed = parse_pattern(std::filesystem::path(pattern).filename().string());
    return parsed ? number_in(*parsed, file_name) : -1;
}

Result<std::filesystem::path> name_with_word(const std::string& pattern, const std::string& word) {
    const Result<std::filesystem::path> first = frame_name(pattern, 0);
    if (!first) return first.error();
    const Result<FramePattern> parsed = parse_pattern(std::filesystem::path(pattern).filename().string());
    if (!parsed) return Error{pattern + ": the number must be in the file's name, not in the folder's"};
    return first->parent_path() / (parsed->before + word + parsed->after);
}

Result<NumberedFiles> existing_frames(const std::string& pattern) {
    const Result<std::filesystem::path> first = frame_name(pattern, 0);
    if (!first) return first.error();
    const Result<FramePattern> parsed = parse_pattern(std::filesystem::path(pattern).filename().string());
    if (!parsed) return NumberedFiles{};  // the number is in the folder's name
    return files_in(first->parent_path(), *parsed);
}

Result<std::vector<std::filesystem::path>> numbered_files(const std::filesystem::path& folder,
                                                          const std::string& pattern) {
    const Result<FramePattern> parsed = parse_pattern(pattern);
    if (!parsed) return parsed.error();
    const NumberedFiles found = files_in(folder, *parsed);
    if (found.empty())
        return Error{
            fmt::format("no file matches '{}' in the folder '{}'", pattern, folder.empty() ? "." : folder.string())};
    std::vector<std::filesystem::path> files;
    for (const auto& [number, file] : found) {
        const int expected = found.begin()->first + static_cast<int>(files.size());
        if (number != expected)
            return Error{fmt::format("'{}' is missing; there must be a file for each number from {} to {}",
                                     (folder / name_of(*parsed, expected)).string(), found.begin()->first,
                                     found.rbegin()->first)};
        files.push_back(file);
    }
    return files;
}

}  // namespace stage
