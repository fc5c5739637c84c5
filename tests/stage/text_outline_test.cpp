#include "stage/assets/text_outline.h"

#include <fmt/format.h>
#include <ft2build.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <random>
#include FT_FREETYPE_H

#include "outline_inside.h"
#include "stage/assets/font_file.h"

using namespace stage;
using namespace stage_test;
using testing::HasSubstr;

namespace {

constexpr unsigned kSeed = 8;
constexpr const char* kFonts[] = {"DejaVu Sans", "DejaVu Serif:bold", "DejaVu Sans Mono:oblique"};

TextSettings text_of(const std::string& text, const std::string& font = {}) {
    TextSettings settings;
    settings.text = text;
    settings.font = font;
    return settings;
}

std::vector<Mesh> meshes_of(const TextSettings& settings) {
    Result<TextOutlines> outlines = make_text_outlines(settings);
    EXPECT_TRUE(outlines) << outlines.error().message;
    return outlines ? std::move(outlines->meshes) : std::vector<Mesh>{};
}

// A character as the font renderer fills it, at `pixels` to the em: what an outline must agree with.
class Rendered {
  public:
    Rendered(const std::string& font, char32_t character, unsigned pixels) {
        const Result<FontFile> file = find_font(font);
        EXPECT_TRUE(file) << file.error().message;
        EXPECT_EQ(FT_Init_FreeType(&library_), 0);
        EXPECT_EQ(FT_New_Face(library_, file->path.c_str(), file->face_index, &face_), 0);
        FT_Set_Pixel_Sizes(face_, 0, pixels);
        EXPECT_EQ(FT_Load_Char(face_, character, FT_LOAD_NO_HINTING | FT_LOAD_RENDER), 0);
    }
    ~Rendered() {
        FT_Done_Face(face_);
        FT_Done_FreeType(library_);
    }
    // 0 to 255: how much of the pixel is covered, its lower left corner `x`, `y` pixels from the origin.
    int coverage(int x, int y) const {
        const FT_GlyphSlot slot = face_->glyph;
        const int column = x - slot->bitmap_left, row = slot->bitmap_top - 1 - y;
        if (column < 0 || row < 0 || column >= static_cast<int>(slot->bitmap.width) ||
            row >= static_cast<int>(slot->bitmap.rows))
            return 0;
        return slot->bitmap.buffer[row * slot->bitmap.pitch + column];
    }

  private:
    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
};

TEST(TextOutline, EnclosesWhatTheFontRendererFills) {
    constexpr unsigned kPixels = 400;
    constexpr std::u32string_view kCharacters = U"OB8@%&#äÄåijgQR£éÅ¾ßЖ";
    constexpr const char* kUtf8[] = {"O", "B", "8", "@", "%", "&", "#", "ä", "Ä", "å", "i",
                                     "j", "g", "Q", "R", "£", "é", "Å", "¾", "ß", "Ж"};
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<int> x(-100, 600), y(-200, 500);
    for (const char* font : kFonts) {
        for (size_t c = 0; c < kCharacters.size(); ++c) {
            const Rendered rendered(font, kCharacters[c], kPixels);
            TextSettings settings = text_of(kUtf8[c], font);
            settings.size = static_cast<float>(kPixels);
            settings.tolerance = 0.05f;
            const std::vector<Mesh> meshes = meshes_of(settings);
            int inside = 0, on_the_border = 0;
            for (int i = 0; i < 10000; ++i) {
                const int column = x(random), row = y(random), coverage = rendered.coverage(column, row);
                const bool whole = coverage == 0 || coverage == 255;
                on_the_border += !whole;
                inside += coverage == 255;
                if (!whole) continue;
                ASSERT_EQ(any_encloses(meshes, column + 0.5, row + 0.5), coverage == 255)
                    << font << ", " << kUtf8[c] << " at pixel " << column << ", " << row << ", seed " << kSeed;
            }
            EXPECT_GT(inside, 100) << kUtf8[c];
            EXPECT_LT(on_the_border, 400) << kUtf8[c];
        }
    }
}

struct PartsCase {
    const char* text;
    std::vector<int> letters;  // letter_of_mesh
};

TEST(TextOutline, EachPartOfALetterIsAMesh) {
    const PartsCase kCases[] = {
        {"O8@", {0, 1, 2}},  // holes are no parts
        {"iä%", {0, 0, 1, 1, 1, 2, 2, 2}},
        {"ffi", {0, 1, 2, 2}},     // no ligature
        {"a b\nc", {0, 1, 2}},     // spaces have no number
        {"a\xCC\x88", {0, 0, 0}},  // a combining mark belongs to its letter
    };
    for (const auto& [text, letters] : kCases)
        EXPECT_EQ(make_text_outlines(text_of(text))->letter_of_mesh, letters) << text;
}

TEST(TextOutline, IsPlacedBySizeAlignmentAndKerning) {
    // In DejaVu Sans H is 1493 of 2048 units tall, with upright stems that start 201 units from the left; an A and a V
    // overlap by kerning, and 1.1640625 em lie between two baselines.
    TextSettings settings = text_of("H");
    settings.size = 2048;
    const Box single = box_of(meshes_of(settings));
    EXPECT_FLOAT_EQ(static_cast<float>(single.min_x), 201);
    EXPECT_FLOAT_EQ(static_cast<float>(single.min_y), 0);
    EXPECT_FLOAT_EQ(static_cast<float>(single.max_y), 1493);

    settings.text = "H\nH";
    EXPECT_NEAR(box_of(meshes_of(settings)).min_y, -1.1640625 * 2048, 1);

    const auto width_of = [&settings](const char* text) {
        settings.text = text;
        const Box box = box_of(meshes_of(settings));
        return box.max_x - box.min_x;
    };
    EXPECT_LT(width_of("AVAVAV"), width_of("AAAVVV") - 300);

    settings.text = "HH";
    settings.alignment = TextAlignment::Left;
    const Box left = box_of(meshes_of(settings));
    settings.alignment = TextAlignment::Centre;
    const Box centre = box_of(meshes_of(settings));
    settings.alignment = TextAlignment::Right;
    const Box right = box_of(meshes_of(settings));
    EXPECT_NEAR(centre.min_x, -centre.max_x, 1);  // H stands in the middle of its advance
    EXPECT_NEAR(right.max_x, -left.min_x, 1);
    EXPECT_NEAR(left.max_x - left.min_x, right.max_x - right.min_x, 1);
}

TEST(TextOutline, AFinerToleranceHasMoreCorners) {
    TextSettings settings = text_of("S");
    settings.tolerance = 1;
    const size_t coarse = meshes_of(settings)[0].vertices.size();
    settings.tolerance = 0.01f;
    const size_t fine = meshes_of(settings)[0].vertices.size();
    EXPECT_NEAR(static_cast<double>(fine) / static_cast<double>(coarse), 10, 5);  // chords go with 1 / √tolerance
}

TEST(TextOutline, NotesCharactersThatTheFontLacks) {
    const Result<TextOutlines> outlines =
        make_text_outlines(text_of("a\xF0\x93\x80\x80"
                                   "b"));  // a hieroglyph
    ASSERT_TRUE(outlines);
    EXPECT_EQ(outlines->letter_of_mesh, (std::vector<int>{0, 1}));
    ASSERT_EQ(outlines->notes.size(), 1u);
    EXPECT_THAT(outlines->notes[0], HasSubstr("DejaVuSans.ttf has no glyph for U+13000; it is left out"));
}

TEST(TextOutline, SaysWhatWouldBeRight) {
    const std::string not_a_font = testing::TempDir() + "not_a_font.ttf";
    std::ofstream(not_a_font) << "text";
    TextSettings size = text_of("a"), tolerance = text_of("a");
    size.size = -1;
    tolerance.tolerance = std::numeric_limits<float>::infinity();
    const std::pair<TextSettings, std::string> kCases[] = {
        {text_of(""), "text: it is empty; give at least one character"},
        {text_of(std::string(10001, 'a')), "text: 10001 bytes; it may have at most 10000"},
        {text_of(" \n "), "draws nothing for \" \n \""},
        {size, "text: size is -1; it must be a number above 0"},
        {tolerance, "text: tolerance is inf; it must be 0 or a number above"},
        {text_of("a", "No Such Family"),
         "font \"No Such Family\" is not installed; the nearest is \"DejaVu Sans\"; give a "
         "family that fc-list shows or the path of a font file"},
        {text_of("a", "/no/such/file.ttf"), "font /no/such/file.ttf: there is no such file"},
        {text_of("a", not_a_font), not_a_font + ": not a font file that FreeType reads"},
    };
    for (const auto& [settings, message] : kCases) {
        const Result<TextOutlines> outlines = make_text_outlines(settings);
        ASSERT_FALSE(outlines) << message;
        EXPECT_THAT(outlines.error().message, HasSubstr(message));
    }
}

}  // namespace
