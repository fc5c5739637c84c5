#include "stage/output/frame_names.h"

#include <fmt/format.h>

namespace stage {
namespace {

/// A stretch of digits behind the %: "" , "4" or "04".
struct NumberField {
    size_t length = 0;  // of the whole field with % and d
    int width = 0;
    bool zeros = false;
};

/// Of the text at a %; length 0 when it is no number field.
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

}  // namespace

bool is_frame_pattern(const std::string& name) {
    return name.find('%') != std::string::npos;
}

Result<std::filesystem::path> frame_name(const std::string& pattern, int number) {
    const Error malformed{pattern +
                          ": a pattern of frame names holds one number such as %04d, and %% for a percent sign"};
    if (number < 0) return Error{fmt::format("{}: there is no frame {}", pattern, number)};
    std::string name;
    int fields = 0;
    for (size_t at = 0; at < pattern.size();) {
        if (pattern[at] != '%') {
            name += pattern[at++];
        } else if (pattern.compare(at, 2, "%%") == 0) {
            name += '%';
            at += 2;
        } else {
            const NumberField field = parse_field(std::string_view(pattern).substr(at));
            if (field.length == 0) return malformed;
            name +=
                field.zeros ? fmt::format("{:0{}}", number, field.width) : fmt::format("{:{}}", number, field.width);
            at += field.length;
            ++fields;
        }
    }
    if (fields != 1) return malformed;
    return std::filesystem::path(name);
}

}  // namespace stage
