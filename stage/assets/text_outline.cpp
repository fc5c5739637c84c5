#include "text_outline.h"

#include <fmt/format.h>
#include <ft2build.h>
#include <hb-ft.h>

#include <map>
#include <memory>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include "contours.h"
#include "font_file.h"

namespace stage {
namespace {

constexpr size_t kMaxTextBytes = 10000;
constexpr double kPerUnit = 64;           // FreeType and HarfBuzz count in 64ths of a unit
constexpr float kTolerancesPerEm = 1000;  // chords stay within size / kTolerancesPerEm of their curve
constexpr int kLoadFlags = FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;

template <class T, auto release>
struct Releaser {
    void operator()(T* object) const { release(object); }
};
using Library = std::unique_ptr<FT_LibraryRec_, Releaser<FT_LibraryRec_, FT_Done_FreeType>>;
using Face = std::unique_ptr<FT_FaceRec_, Releaser<FT_FaceRec_, FT_Done_Face>>;
using Shaper = std::unique_ptr<hb_font_t, Releaser<hb_font_t, hb_font_destroy>>;
using ShapedText = std::unique_ptr<hb_buffer_t, Releaser<hb_buffer_t, hb_buffer_destroy>>;

// An open font at one pixel per design unit, so that coordinates are not rounded.
struct Font {
    std::string name;
    Library library;
    Face face;
    Shaper shaper;
};

Result<Font> open_font(const std::string& name) {
    const Result<FontFile> file = find_font(name);
    if (!file) return file.error();
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return Error{"FreeType cannot be initialised: out of memory"};
    Font font{file->path, Library(library), nullptr, nullptr};
    FT_Face face = nullptr;
    if (FT_New_Face(library, file->path.c_str(), file->face_index, &face) != 0)
        return Error{fmt::format("font {}: not a font file that FreeType reads", file->path)};
    font.face.reset(face);
    if (!FT_IS_SCALABLE(face)) return Error{fmt::format("font {}: holds bitmaps only, no outlines", file->path)};
    if (FT_Set_Pixel_Sizes(face, 0, face->units_per_EM) != 0)
        return Error{fmt::format("font {}: cannot be scaled", file->path)};
    font.shaper.reset(hb_ft_font_create_referenced(face));
    hb_ft_font_set_load_flags(font.shaper.get(), kLoadFlags);
    return font;
}

// A glyph being decomposed into contours, in design units.
struct Decomposition {
    std::vector<Contour> contours;
    double tolerance;
};

ContourPoint point(const FT_Vector* v) {
    return {static_cast<double>(v->x) / kPerUnit, static_cast<double>(v->y) / kPerUnit};
}

int move_to(const FT_Vector* to, void* user) {
    static_cast<Decomposition*>(user)->contours.push_back({point(to)});
    return 0;
}

int line_to(const FT_Vector* to, void* user) {
    static_cast<Decomposition*>(user)->contours.back().push_back(point(to));
    return 0;
}

int conic_to(const FT_Vector* control, const FT_Vector* to, void* user) {
    auto& d = *static_cast<Decomposition*>(user);
    append_quadratic(d.contours.back(), point(control), point(to), d.tolerance);
    return 0;
}

int cubic_to(const FT_Vector* control_1, const FT_Vector* control_2, const FT_Vector* to, void* user) {
    auto& d = *static_cast<Decomposition*>(user);
    append_cubic(d.contours.back(), point(control_1), point(control_2), point(to), d.tolerance);
    return 0;
}

Result<std::vector<Mesh>> glyph_outlines(const Font& font, hb_codepoint_t glyph, double tolerance) {
    FT_Face face = font.face.get();
    if (FT_Load_Glyph(face, glyph, kLoadFlags) != 0 || face->glyph->format != FT_GLYPH_FORMAT_OUTLINE)
        return Error{fmt::format("font {}: glyph {} has no outline", font.name, glyph)};
    FT_Outline& outline = face->glyph->outline;
    const FT_Outline_Funcs callbacks{move_to, line_to, conic_to, cubic_to, 0, 0};
    Decomposition decomposition{{}, tolerance};
    if (FT_Outline_Decompose(&outline, &callbacks, &decomposition) != 0)
        return Error{fmt::format("font {}: the outline of glyph {} is damaged", font.name, glyph)};
    const bool even_odd = (outline.flags & FT_OUTLINE_EVEN_ODD_FILL) != 0;
    return outlines_of(decomposition.contours, even_odd ? FillRule::kEvenOdd : FillRule::kNonZero);
}

struct Glyph {
    hb_codepoint_t index;
    double x, y;  // design units from the line's start
};

struct Line {
    std::vector<Glyph> glyphs;
    double width = 0;  // design units
};

Line shape_line(const Font& font, const std::string& text, std::vector<std::string>& missing) {
    const ShapedText buffer(hb_buffer_create());
    hb_buffer_add_utf8(buffer.get(), text.data(), static_cast<int>(text.size()), 0, static_cast<int>(text.size()));
    hb_buffer_guess_segment_properties(buffer.get());
    unsigned count = 0;
    std::map<uint32_t, hb_codepoint_t> character_at;  // by byte offset in the text; shaping keeps it as `cluster`
    const hb_glyph_info_t* infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
    for (unsigned i = 0; i < count; ++i) character_at[infos[i].cluster] = infos[i].codepoint;

    // Switches optional ligatures off. Ligatures that a script requires are other features and stay on.
    constexpr unsigned kToTheEnd = HB_FEATURE_GLOBAL_END;
    const hb_feature_t no_ligatures[] = {{HB_TAG('l', 'i', 'g', 'a'), 0, 0, kToTheEnd},
                                         {HB_TAG('c', 'l', 'i', 'g'), 0, 0, kToTheEnd}};
    hb_shape(font.shaper.get(), buffer.get(), no_ligatures, 2);
    infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
    const hb_glyph_position_t* positions = hb_buffer_get_glyph_positions(buffer.get(), &count);
    Line line;
    for (unsigned i = 0; i < count; ++i) {
        if (infos[i].codepoint != 0)  // after shaping, the codepoint is a glyph's index; 0 means no glyph
            line.glyphs.push_back(
                {infos[i].codepoint, line.width + positions[i].x_offset / kPerUnit, positions[i].y_offset / kPerUnit});
        else
            missing.push_back(fmt::format("font {} has no glyph for U+{:04X}; the character is left out", font.name,
                                          character_at[infos[i].cluster]));
        line.width += positions[i].x_advance / kPerUnit;
    }
    return line;
}

double start_of(const Line& line, TextAlignment alignment) {
    switch (alignment) {
        case TextAlignment::kLeft:
            return 0;
        case TextAlignment::kCentre:
            return -line.width / 2;
        case TextAlignment::kRight:
            return -line.width;
    }
    return 0;
}

Mesh placed(Mesh mesh, double x, double y, double scale) {
    for (Vector3& v : mesh.vertices)
        v = {static_cast<float>((v.x + x) * scale), static_cast<float>((v.y + y) * scale), 0.0f};
    return mesh;
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char c : text) {
        if (c == '\n')
            lines.emplace_back();
        else
            lines.back() += c;
    }
    return lines;
}

}  // namespace

Result<TextOutlines> make_text_outlines(const TextSettings& settings) {
    if (settings.text.size() > kMaxTextBytes)
        return Error{fmt::format("text: {} bytes; at most {} are allowed", settings.text.size(), kMaxTextBytes)};
    const Result<Font> font = open_font(settings.font);
    if (!font) return font.error();
    const double scale = settings.size / static_cast<double>(font->face->units_per_EM);
    const double tolerance = settings.size / kTolerancesPerEm / scale;

    TextOutlines result;
    std::map<hb_codepoint_t, std::vector<Mesh>> outlines_of_glyph;
    double baseline = 0;
    for (const std::string& text : lines_of(settings.text)) {
        const Line line = shape_line(*font, text, result.missing);
        const double start = start_of(line, settings.alignment);
        for (const Glyph& glyph : line.glyphs) {
            auto known = outlines_of_glyph.find(glyph.index);
            if (known == outlines_of_glyph.end()) {
                Result<std::vector<Mesh>> outlines = glyph_outlines(*font, glyph.index, tolerance);
                if (!outlines) return outlines.error();
                known = outlines_of_glyph.emplace(glyph.index, std::move(*outlines)).first;
            }
            for (const Mesh& mesh : known->second)
                result.meshes.push_back(placed(mesh, start + glyph.x, baseline + glyph.y, scale));
        }
        baseline -= font->face->height;
    }
    if (result.meshes.empty())
        return Error{fmt::format("text: font {} draws nothing for \"{}\"", font->name, settings.text)};
    return result;
}

}  // namespace stage
