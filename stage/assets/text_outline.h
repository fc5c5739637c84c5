// Text as outlines.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

enum class TextAlignment { Left, Centre, Right };

struct TextSettings {
    std::string text;                               // UTF-8; '\n' begins a line; what is not UTF-8 shows as U+FFFD
    std::string font;                               // as in find_font; empty is DejaVu Sans
    float size = 100.0f;                            // units per em, which is about the distance of two lines; above 0
    TextAlignment alignment = TextAlignment::Left;  // of every line about x = 0
    float tolerance = 0.0f;                         // units that a chord may leave its curve by; 0 is size / 1000
};

struct TextOutlines {
    std::vector<Mesh> meshes;
    std::vector<int> letter_of_mesh;  // for each mesh: which letter of those drawn, from 0, left to right, line by line
    std::vector<std::string> notes;   // one for each character that the font has no glyph for and that was left out
};

/// The text in the x-y plane (z 0), first baseline at y = 0, further lines below. Letters are shaped and kerned by the
/// font's own tables, left to right or right to left by script, without ligatures like fi. Every part of a letter that
/// is apart from the others (the dots of an i or ä) is a mesh of its own, with its holes bridged in; overlapping
/// contours are joined as a font renderer fills them. Letters come in the order in which they stand; a letter without
/// ink (a space) has no number.
/// Errors: font not found or unreadable or without outlines; size or tolerance not a number in range; text empty,
/// longer than 10000 bytes, or without anything to draw. Messages name the font.
STAGE_EXPORT Result<TextOutlines> make_text_outlines(const TextSettings& settings);

}  // namespace stage
