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
    std::string text;                                  // UTF-8; '\n' begins a line; invalid bytes become U+FFFD
    std::string font;                                  // as in find_font; empty is DejaVu Sans
    float size = 100.0f;                               // units per em, about the distance between two lines; above 0
    TextAlignment alignment = TextAlignment::kCentre;  // of each line relative to x = 0
};

struct TextOutlines {
    std::vector<Mesh> meshes;
    std::vector<std::string> missing;  // a message for each character without a glyph in the font
};

/// The text in the x-y plane (z 0), the first baseline at y = 0, further lines below. The font's own tables shape and
/// kern the letters, left to right or right to left as the script requires; optional ligatures such as fi are off. Each
/// separate part of a letter (such as each dot of an ä) is one mesh, with its holes connected by bridge_holes.
/// Overlapping contours are merged, as font renderers fill them. Meshes are in the order of the letters. Curves become
/// chords within size / 1000 units of the curve. Characters without a glyph are left out.
/// Errors: font not found, unreadable or without outlines; text longer than 10000 bytes, or without anything to draw.
/// Messages name the font.
STAGE_EXPORT Result<TextOutlines> make_text_outlines(const TextSettings& settings);

}  // namespace stage
