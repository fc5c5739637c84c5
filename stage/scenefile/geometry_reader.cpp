#include "geometry_reader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "stage/file_ending.h"
#include "stage/names.h"

namespace stage {

namespace {

// The keys of a GeometryKind, in the order of its values: required ones and optional ones.
struct KindRow {
    const char* name;
    std::vector<std::string> needed;
    std::vector<std::string> possible;
};

const KindRow kKinds[] = {
    {"rectangle", {"width", "height"}, {"fill"}},
    {"ellipse", {"width", "height"}, {"segments", "fill"}},
    {"polygon", {"points"}, {"fill"}},
    {"mesh", {"file"}, {}},
    {"text", {"text"}, {"font", "size", "align", "fill"}},
    {"picture", {"file"}, {"width", "height", "threshold", "fill"}},
    {"plate", {"image", "width", "height"}, {"fill"}},
};

std::vector<std::string> kind_names() {
    std::vector<std::string> names;
    for (const KindRow& row : kKinds) names.emplace_back(row.name);
    return names;
}

void read_points(KeyReader& reader, const KeyedNode& entry, GeometryDescription& out) {
    const toml::array* array = entry.node.as_array();
    if (array == nullptr || array->size() < 3) {
        report(reader, entry.node.source(),
               fmt::format("points must be three or more [x, y], not {}", describe(entry.node)));
        return;
    }
    for (const toml::node& element : *array) {
        std::array<float, 2> point{};
        if (read_pair(reader, {"a point", element}, point)) out.points.push_back(point);
    }
}

// Reads a font file or the name of an installed family. Families are looked up when the scene is built.
void read_font(KeyReader& reader, const KeyedNode& entry, GeometryDescription& out) {
    if (!read_text(reader, entry, out.font)) return;
    const std::string extension = file_ending(out.font);
    if (out.font.find('/') == std::string::npos && extension != ".ttf" && extension != ".otf") return;
    std::filesystem::path file;
    if (read_file_path(reader, entry, file)) out.font = std::filesystem::absolute(file).string();
}

const KeyRow<GeometryDescription> kGeometryKeys[] = {
    {"kind",
     [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) {
         size_t choice = 0;
         if (read_choice(r, e, kind_names(), choice)) g.kind = static_cast<GeometryKind>(choice);
     }},
    {"width", [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) { read_length(r, e, g.width); }},
    {"height", [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) { read_length(r, e, g.height); }},
    {"segments",
     [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) { read_integer(r, e, 3, 4096, g.segments); }},
    {"points", read_points},
    {"file", [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) { read_file_path(r, e, g.file); }},
    {"text",
     [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) {
         read_text(r, e, g.text);
         g.text_place = place_of(r, e.node.source());
     }},
    {"font", read_font},
    {"size", [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) { read_length(r, e, g.size); }},
    {"align",
     [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) {
         size_t choice = 0;
         if (read_choice(r, e, {"left", "centre", "right"}, choice)) g.alignment = static_cast<TextAlignment>(choice);
     }},
    {"image",
     [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) {
         read_text(r, e, g.image);
         g.image_place = place_of(r, e.node.source());
     }},
    {"threshold",
     [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) { read_number(r, e, 0.0, 1.0, g.threshold); }},
    {"fill",
     [](KeyReader& r, const KeyedNode& e, GeometryDescription& g) {
         Triple color{};
         if (read_color(r, e, color)) g.fill = color;
     }},
};

void check_keys_of_kind(KeyReader& reader, const toml::table& table, const KindRow& kind) {
    for (const std::string& key : kind.needed) {
        if (!table.contains(key))
            report(reader, table.source(), fmt::format("a geometry of kind \"{}\" needs {}", kind.name, key));
    }
    const std::vector<std::string> known = key_names(kGeometryKeys);
    for (const auto& [key, node] : entries_as_written(table)) {
        if (key->str() == "kind" || !contains(known, key->str())) continue;
        if (!contains(kind.needed, key->str()) && !contains(kind.possible, key->str()))
            report(reader, key->source(),
                   fmt::format("{} is not for a geometry of kind \"{}\", which takes: {}{}{}", key->str(), kind.name,
                               fmt::join(kind.needed, ", "), kind.possible.empty() ? "" : ", ",
                               fmt::join(kind.possible, ", ")));
    }
}

}  // namespace

void read_geometry(KeyReader& reader, const KeyedNode& entry, std::optional<GeometryDescription>& out) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    GeometryDescription geometry;
    geometry.place = place_of(reader, entry.node.source());
    const size_t errors_before = reader.errors.size();
    read_keys(reader, *table, "a geometry", kGeometryKeys, geometry);
    if (!table->contains("kind"))
        report(reader, table->source(), fmt::format("a geometry needs a kind: {}", fmt::join(kind_names(), ", ")));
    else if (reader.errors.size() == errors_before)
        check_keys_of_kind(reader, *table, kKinds[static_cast<size_t>(geometry.kind)]);
    if (geometry.kind == GeometryKind::kPlate && !geometry.fill) geometry.fill = Triple{1, 1, 1};
    out = geometry;
}

void append_geometry_keys(std::vector<std::string>& keys) {
    for (const std::string& key : key_names(kGeometryKeys)) keys.push_back("container.geometry." + key);
}

}  // namespace stage
