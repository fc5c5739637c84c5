// Text as outlines.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

enum class TextAlignment { kLeft, kCentre, kRight };

struct TextSettings {
    std::string text;                                  // UTF-8; '\n' begins a line; invalid UTF-8 shows as U+FFFD
    std::string font;                                  // as in find_font; empty is DejaVu Sans
    float size = 100.0f;                               // units per em, about the distance between two lines; above 0
    TextAlignment alignment = TextAlignment::kCentre;  // of every line about x = 0
};

struct TextOutlines {
    std::vector<Mesh> meshes;
    std::vector<std::string> missing;  // a line for each character that the font has no glyph for
};

/// The text in the x-y plane (z 0), first baseline at y = 0, further lines below. Letters are shaped and kerned by the
/// font's own tables, left to right or right to left by script, without ligatures such as fi. Every separate part of a
/// letter (each dot of an ä) is a mesh of its own, with its holes bridged in; overlapping contours are joined as a font
/// renderer fills them. Meshes come in the order of the letters. Curves become chords that stay within size / 1000
/// units. Characters without a glyph are left out.
/// Errors: font not found, unreadable or without outlines; text longer than 10000 bytes, or without anything to draw.
/// Messages name the font.
STAGE_EXPORT Result<TextOutlines> make_text_outlines(const TextSettings& settings);

}  // namespace stage
