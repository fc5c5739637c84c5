#include "call_file.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>

#include "value_text.h"

namespace stage {
namespace {

constexpr std::string_view kFirstLine = "tovu-calls 1";
constexpr size_t kMostDeep = 1000;

/// The lines of the file, before walks are inserted.
using Lines = std::vector<CallLine>;

struct Reader {
    CallFile file;
    Lines written;
    std::map<uint32_t, Lines> walks;
    std::string error;  // message about the first mistake
};

void refuse(Reader& reader, int number, const std::string& message) {
    if (reader.error.empty()) reader.error = fmt::format("{}:{}: {}", reader.file.name, number, message);
}

/// The length of the call at the start of `text`, closing bracket included; 0 if there is no call.
size_t end_of_call(std::string_view text) {
    const size_t open = text.find('(');
    if (open == std::string_view::npos || open == 0 || text.find_first_of(" \"") < open) return 0;
    std::string_view rest = text.substr(open + 1);
    for (std::string ignored; !rest.empty();) {
        if (rest[0] == ')') return text.size() - rest.size() + 1;
        if (rest[0] == '"') {
            if (!take_quoted(rest, ignored)) return 0;
        } else {
            rest.remove_prefix(1);
        }
    }
    return 0;
}

bool is_word(std::string_view text) {
    for (const std::string_view word :
         {"plugin ", "instance ", "frame ", "set ", "wrote ", "state ", "walk ", "image ", "-> "})
        if (text.starts_with(word)) return true;
    return false;
}

constexpr std::string_view kAnswer = " = ";

/// Splits a line into text and answer.
bool take_line(std::string_view text, CallLine& line) {
    if (text.starts_with("= ")) {
        line.answer = text.substr(2);
        return true;
    }
    line.text = text;
    if (is_word(text)) return true;
    const size_t end = end_of_call(text);
    if (end == 0) return false;
    if (end == text.size()) return true;
    if (!text.substr(end).starts_with(kAnswer)) return false;
    line.text = text.substr(0, end);
    line.answer = text.substr(end + kAnswer.size());
    return true;
}

/// Reads all lines except the first, the seed, comments, and the last. Checks their form and indentation.
void read_lines(Reader& reader, std::istream& stream) {
    std::string text;
    int number = 0;
    bool ended = false;
    bool has_seed = false;
    size_t rows_depth = 0;  // depth of the rows of the current image; 0 outside of an image
    while (reader.error.empty() && std::getline(stream, text)) {
        ++number;
        if (number == 1 && text != kFirstLine)
            return refuse(reader, 1, fmt::format("not a recording of calls: it must begin with '{}'", kFirstLine));
        if (ended) return refuse(reader, number, "there is text after the line 'end'");
        ended = text == "end";
        if (number == 1 || ended || text.starts_with('#')) continue;
        const size_t depth = std::min(text.find_first_not_of(' '), text.size());
        const std::string_view content = std::string_view(text).substr(depth);
        if (!has_seed) {
            has_seed = content.starts_with("seed ") && read_value_text(content.substr(5), reader.file.seed);
            if (!has_seed)
                return refuse(reader, number, "'seed' and a whole number from 0 to 4294967295 are expected here");
            continue;
        }
        CallLine line{number, depth, "", {}};
        if (depth > kMostDeep || depth > (reader.written.empty() ? 0 : reader.written.back().depth + 1))
            return refuse(reader, number, "the line is indented too far");
        if (rows_depth > 0 && depth != rows_depth) rows_depth = 0;
        if (rows_depth > 0)
            line.text = content;
        else if (!take_line(content, line))
            return refuse(reader, number, fmt::format("'{}' is not a line of a recording", content));
        if (line.text.starts_with("image ")) rows_depth = depth + 1;
        reader.written.push_back(std::move(line));
    }
    if (!ended) refuse(reader, number, "the file ends here, without its last line 'end': it is incomplete");
}

/// One past the last line that belongs to the line at `first`.
size_t end_of_block(const Lines& lines, size_t first) {
    size_t end = first + 1;
    while (end < lines.size() && lines[end].depth > lines[first].depth) ++end;
    return end;
}

/// Reads a row of an image, run-length encoded: "00ff20*3 00ff21".
bool take_row(std::string_view row, size_t pixel_bytes, std::vector<uint8_t>& pixels) {
    while (!row.empty()) {
        const std::string_view run = row.substr(0, row.find(' '));
        row.remove_prefix(std::min(run.size() + 1, row.size()));
        const size_t star = std::min(run.find('*'), run.size());
        uint32_t count = 1;
        std::array<uint8_t, 4> pixel{};
        if (star != 2 * pixel_bytes || (star < run.size() && !read_value_text(run.substr(star + 1), count)))
            return false;
        for (size_t i = 0; i < pixel_bytes; ++i) {
            const char* digits = run.data() + 2 * i;
            if (std::from_chars(digits, digits + 2, pixel[i], 16).ptr != digits + 2) return false;
        }
        if (count > 16384) return false;
        for (; count > 0; --count)
            pixels.insert(pixels.end(), pixel.begin(), pixel.begin() + static_cast<std::ptrdiff_t>(pixel_bytes));
    }
    return true;
}

void take_image(Reader& reader, size_t first, size_t end) {
    const CallLine& heading = reader.written[first];
    const size_t space = heading.text.rfind(' ');
    uint32_t number = 0;
    uint32_t pixel_bytes = 0;
    if (space < 6 || !read_value_text(std::string_view(heading.text).substr(6, space - 6), number) ||
        !read_value_text(std::string_view(heading.text).substr(space + 1), pixel_bytes) || pixel_bytes < 1 ||
        pixel_bytes > 4)
        return refuse(reader, heading.number, "an image has a number and 1 to 4 bytes per pixel, such as 'image 1 4'");
    std::vector<uint8_t>& pixels = reader.file.images[number];
    if (!pixels.empty()) return refuse(reader, heading.number, fmt::format("image {} is given twice", number));
    for (size_t i = first + 1; i < end; ++i)
        if (!take_row(reader.written[i].text, pixel_bytes, pixels))
            return refuse(reader, reader.written[i].number,
                          fmt::format("a row of this image has runs of {} bytes, such as '{:0{}}*3'", pixel_bytes, 0,
                                      2 * pixel_bytes));
}

/// The lines of a walk. A walk without lines refers to an earlier walk of the same number.
const Lines* take_walk(Reader& reader, size_t first, size_t end) {
    const CallLine& heading = reader.written[first];
    uint32_t number = 0;
    const bool right = read_value_text(std::string_view(heading.text).substr(5), number);
    const auto known = reader.walks.find(number);
    const bool is_new = end > first + 1;
    if (!right || is_new != (known == reader.walks.end())) {
        refuse(
            reader, heading.number,
            fmt::format("'{}': {}", heading.text, is_new ? "is given twice" : "its calls are not in the file before"));
        return nullptr;
    }
    if (!is_new) return &known->second;
    return &(reader.walks[number] = Lines(reader.written.begin() + static_cast<std::ptrdiff_t>(first) + 1,
                                          reader.written.begin() + static_cast<std::ptrdiff_t>(end)));
}

void put_in_order(Reader& reader) {
    for (size_t i = 0, end = 0; i < reader.written.size() && reader.error.empty(); i = end) {
        const CallLine& line = reader.written[i];
        const bool is_image = line.text.starts_with("image ");
        const bool is_walk = line.text.starts_with("walk ");
        end = is_image || is_walk ? end_of_block(reader.written, i) : i + 1;
        if (is_image) {
            take_image(reader, i, end);
        } else if (is_walk) {
            const Lines* walk = take_walk(reader, i, end);
            for (size_t k = 0; walk && k < walk->size(); ++k) {
                reader.file.lines.push_back((*walk)[k]);
                reader.file.lines.back().depth = line.depth;
            }
        } else {
            reader.file.lines.push_back(line);
        }
    }
}

}  // namespace

Result<CallFile> read_call_file(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    Reader reader;
    reader.file.name = file.string();
    if (std::error_code ignored; !stream || std::filesystem::is_directory(file, ignored))
        return Error{
            fmt::format("{}: cannot be read: {}", reader.file.name, stream ? "is a folder" : std::strerror(errno))};
    read_lines(reader, stream);
    if (reader.error.empty()) put_in_order(reader);
    if (!reader.error.empty()) return Error{reader.error};
    return std::move(reader.file);
}

std::vector<std::string> recorded_plugins(const CallFile& file) {
    std::vector<std::string> names;
    for (const CallLine& line : file.lines) {
        std::string name;
        std::string_view rest = line.text;
        if (!rest.starts_with("plugin ")) continue;
        rest.remove_prefix(7);
        if (take_quoted(rest, name)) names.push_back(name);
    }
    return names;
}

}  // namespace stage
