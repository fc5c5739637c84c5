#include <fmt/format.h>
#include <tiny_obj_loader.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>
#include <string_view>

#include "mesh_file_formats.h"

namespace stage {
namespace {

// An object or group: where its `v` lines begin, and the vertices (from 0) that its faces, lines and points refer to.
struct Section {
    size_t first_vertex = 0;
    std::vector<size_t> used;
};

// State of the parser's callbacks. After the first error they do nothing more; the parser still reads to the end.
struct Reading {
    const std::string& path;
    const std::string& text;
    std::stringbuf& stream;
    size_t counted_bytes = 0;
    size_t line = 1;        // number of the line that counted_bytes lies in
    size_t line_begin = 0;  // offset of its first byte
    std::vector<Vector3> vertices{};
    std::vector<Section> sections{Section{}};
    size_t highest_used = 0, highest_used_line = 0;
    std::string error{};
};

bool ends_line(const std::string& text, size_t i) {
    return text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'));
}

// Updates `line` and `line_begin` to the line whose callback is running. The parser has read this line to its end.
void find_line(Reading& reading) {
    const auto read = static_cast<size_t>(std::streamoff(reading.stream.pubseekoff(0, std::ios::cur, std::ios::in)));
    const size_t line_end = read > 0 && ends_line(reading.text, read - 1) ? read - 1 : read;
    for (; reading.counted_bytes < line_end; ++reading.counted_bytes) {
        if (!ends_line(reading.text, reading.counted_bytes)) continue;
        ++reading.line;
        reading.line_begin = reading.counted_bytes + 1;
    }
}

void fail(Reading& reading, const std::string& message) {
    find_line(reading);
    if (reading.error.empty()) reading.error = fmt::format("{}:{}: {}", reading.path, reading.line, message);
}

// True when the line's first three words after the `v` are numbers. The parser itself reads any other word as 0.
bool holds_three_numbers(std::string_view line) {
    constexpr std::string_view kSpaces = " \t";
    line.remove_prefix(std::min(line.find('v') + 1, line.size()));
    for (int i = 0; i < 3; ++i) {
        line.remove_prefix(std::min(line.find_first_not_of(kSpaces), line.size()));
        std::string_view word = line.substr(0, line.find_first_of(" \t\r\n"));
        line.remove_prefix(word.size());
        if (word.starts_with('+')) word.remove_prefix(1);
        double number = 0;
        const auto [end, status] = std::from_chars(word.data(), word.data() + word.size(), number);
        if (status != std::errc{} || end != word.data() + word.size()) return false;
    }
    return true;
}

void on_vertex(void* user, float x, float y, float z, float) {
    auto& reading = *static_cast<Reading*>(user);
    if (!reading.error.empty()) return;
    find_line(reading);
    const std::string_view line = std::string_view(reading.text).substr(reading.line_begin);
    const bool finite = std::isfinite(x) && std::isfinite(y) && std::isfinite(z);
    if (!finite || !holds_three_numbers(line)) {
        fail(reading, "a vertex must be three finite numbers, as in \"v 1 0.5 0\"");
    } else if (reading.vertices.size() == kMaxFileVertices) {
        reading.error = too_many_vertices(reading.path).message;
    } else {
        reading.vertices.push_back({x, y, z});
    }
}

void on_element(void* user, tinyobj::index_t* indices, int count) {
    auto& reading = *static_cast<Reading*>(user);
    if (!reading.error.empty()) return;
    for (int i = 0; i < count; ++i) {
        const int given = indices[i].vertex_index;
        const auto declared = static_cast<int64_t>(reading.vertices.size());
        const int64_t index = given > 0 ? int64_t{given} - 1 : declared + given;  // negative: counted from the last one
        if (given == 0 || index < 0) {
            fail(reading,
                 fmt::format("vertex index {} does not exist; the file declares {} vertices before it; 1 is the first "
                             "vertex, -1 the last one",
                             given, declared));
            return;
        }
        reading.sections.back().used.push_back(static_cast<size_t>(index));
        if (static_cast<size_t>(index) < reading.highest_used) continue;
        find_line(reading);
        reading.highest_used = static_cast<size_t>(index);
        reading.highest_used_line = reading.line;
    }
}

void begin_section(void* user) {
    auto& reading = *static_cast<Reading*>(user);
    reading.sections.push_back({reading.vertices.size(), {}});
}

void on_group(void* user, const char**, int) {
    begin_section(user);
}
void on_object(void* user, const char*) {
    begin_section(user);
}

// Replaces the letters of lines (`l`) and points (`p`) by that of faces (`f`), since the parser has a callback for
// faces only, and joins a line that ends in a backslash to the next one. Keeps the length, so that offsets stay the
// same.
std::string prepared(const std::string& text) {
    std::string result = text;
    size_t line_begin = 0;
    for (size_t i = 0; i < result.size(); ++i) {
        const bool joined = result[i] == '\\' && i + 1 < result.size() && result[i + 1] == '\n';
        if (joined) result[i] = result[i + 1] = ' ';
        if (i == line_begin && (result[i] == ' ' || result[i] == '\t')) ++line_begin;
        const bool is_element = i == line_begin && (result[i] == 'l' || result[i] == 'p') && i + 1 < result.size() &&
                                (result[i + 1] == ' ' || result[i + 1] == '\t');
        if (is_element) result[i] = 'f';
        if (result[i] == '\n' || result[i] == '\r') line_begin = i + 1;
    }
    return result;
}

std::vector<Mesh> meshes_of(Reading& reading) {
    std::vector<bool> used_somewhere(reading.vertices.size());
    for (const Section& section : reading.sections)
        for (const size_t index : section.used) used_somewhere[index] = true;

    std::vector<Mesh> meshes;
    for (size_t s = 0; s < reading.sections.size(); ++s) {
        std::vector<size_t>& used = reading.sections[s].used;
        if (used.empty()) {
            const size_t end =
                s + 1 < reading.sections.size() ? reading.sections[s + 1].first_vertex : reading.vertices.size();
            for (size_t i = reading.sections[s].first_vertex; i < end; ++i)
                if (!used_somewhere[i]) used.push_back(i);
        }
        std::sort(used.begin(), used.end());
        used.erase(std::unique(used.begin(), used.end()), used.end());
        Mesh mesh;
        mesh.vertices.reserve(used.size());
        for (const size_t index : used) mesh.vertices.push_back(reading.vertices[index]);
        meshes.push_back(std::move(mesh));
    }
    return meshes;
}

}  // namespace

Result<std::vector<Mesh>> parse_obj(const std::string& path, const std::string& text) {
    std::istringstream stream(prepared(text));
    Reading reading{path, text, *stream.rdbuf()};
    tinyobj::callback_t callbacks;
    callbacks.vertex_cb = on_vertex;
    callbacks.index_cb = on_element;
    callbacks.group_cb = on_group;
    callbacks.object_cb = on_object;
    std::string warning, error;
    if (!tinyobj::LoadObjWithCallback(stream, callbacks, &reading, nullptr, &warning, &error))
        return Error{fmt::format("{}: {}", path, error)};
    if (!reading.error.empty()) return Error{reading.error};
    if (reading.highest_used_line > 0 && reading.highest_used >= reading.vertices.size())
        return Error{fmt::format("{}:{}: vertex index {} does not exist; the file declares {} vertices", path,
                                 reading.highest_used_line, reading.highest_used + 1, reading.vertices.size())};
    return meshes_of(reading);
}

}  // namespace stage
