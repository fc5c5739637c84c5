#include "stage/assets/text_outline.h"

#include <fmt/format.h>
#include <ft2build.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include FT_FREETYPE_H

#include "outline_inside.h"
#include "stage/assets/font_file.h"
#include "temporary_folder.h"

using namespace stage;
using namespace stage_test;
using testing::HasSubstr;

namespace {

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

// A character as the font renderer fills it, at 400 pixels to the em: how much of each pixel is covered, 0 to 255. The
// origin is the pixel (kLeft, kBelow) of kSide × kSide, the lowest row first.
constexpr int kPixels = 400, kSide = 700, kLeft = 100, kBelow = 200;
std::vector<int> rendered(const std::string& font, char32_t character) {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    const Result<FontFile> file = find_font(font);
    EXPECT_TRUE(file) << file.error().message;
    EXPECT_EQ(FT_Init_FreeType(&library), 0);
    EXPECT_EQ(FT_New_Face(library, file->path.c_str(), file->face_index, &face), 0);
    FT_Set_Pixel_Sizes(face, 0, kPixels);
    EXPECT_EQ(FT_Load_Char(face, character, FT_LOAD_NO_HINTING | FT_LOAD_RENDER), 0);
    const FT_GlyphSlot slot = face->glyph;
    std::vector<int> coverage(kSide * kSide);
    for (int row = 0; row < static_cast<int>(slot->bitmap.rows); ++row)
        for (int column = 0; column < static_cast<int>(slot->bitmap.width); ++column) {
            const int x = kLeft + slot->bitmap_left + column, y = kBelow + slot->bitmap_top - 1 - row;
            coverage.at(static_cast<size_t>(y) * kSide + static_cast<size_t>(x)) =
                slot->bitmap.buffer[row * slot->bitmap.pitch + column];
        }
    FT_Done_FreeType(library);  // and the face with it
    return coverage;
}

TEST(TextOutline, EnclosesWhatTheFontRendererFills) {
    const std::pair<char32_t, const char*> characters[] = {
        {U'O', "O"}, {U'B', "B"}, {U'8', "8"}, {U'@', "@"}, {U'%', "%"}, {U'&', "&"}, {U'ä', "ä"},
        {U'Å', "Å"}, {U'g', "g"}, {U'Q', "Q"}, {U'£', "£"}, {U'¾', "¾"}, {U'Ж', "Ж"}};
    for (const char* font : {"DejaVu Sans", "DejaVu Serif:bold", "DejaVu Sans Mono:oblique"}) {
        for (const auto& [character, utf8] : characters) {
            SCOPED_TRACE(fmt::format("{} in {}", utf8, font));
            const std::vector<int> coverage = rendered(font, character);
            TextSettings settings = text_of(utf8, font);
            settings.size = kPixels;
            settings.tolerance = 0.05f;
            const std::vector<Mesh> meshes = meshes_of(settings);
            int inside = 0;
            for (int i = 0; i < kSide * kSide; i += 47) {  // no divisor of the side: all columns have their turn
                const int covered = coverage[static_cast<size_t>(i)], x = i % kSide - kLeft, y = i / kSide - kBelow;
                if (covered != 0 && covered != 255) continue;  // on the border
                inside += covered == 255;
                ASSERT_EQ(any_encloses(meshes, x + 0.5, y + 0.5), covered == 255) << "at pixel " << x << ", " << y;
            }
            EXPECT_GT(inside, 100);
        }
    }
}

TEST(TextOutline, EachPartOfALetterIsAMesh) {
    const std::pair<const char*, std::vector<int>> kCases[] = {
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
    const auto box_with = [](const char* text, TextAlignment alignment = TextAlignment::Left) {
        TextSettings settings = text_of(text);
        settings.size = 2048;
        settings.alignment = alignment;
        return box_of(meshes_of(settings));
    };
    const Box left = box_with("HH"), centre = box_with("HH", TextAlignment::Centre),
              right = box_with("HH", TextAlignment::Right);
    EXPECT_NEAR(left.min_x, 201, 1e-3);
    EXPECT_NEAR(left.min_y, 0, 1e-3);
    EXPECT_NEAR(left.max_y, 1493, 1e-3);
    EXPECT_NEAR(centre.min_x, -centre.max_x, 1);  // H stands in the middle of its advance
    EXPECT_NEAR(right.max_x, -left.min_x, 1);
    EXPECT_NEAR(left.max_x - left.min_x, right.max_x - right.min_x, 1);
    EXPECT_NEAR(box_with("H\nH").min_y, -1.1640625 * 2048, 1);
    EXPECT_LT(box_with("AVAVAV").max_x, box_with("AAAVVV").max_x - 300);
}

TEST(TextOutline, AFinerToleranceHasMoreCorners) {
    const auto corners_at = [](float tolerance) {
        TextSettings settings = text_of("S");
        settings.tolerance = tolerance;
        return static_cast<double>(meshes_of(settings)[0].vertices.size());
    };
    EXPECT_NEAR(corners_at(0.01f) / corners_at(1), 10, 5);  // chords go with 1 / √tolerance
}

TEST(TextOutline, NotesCharactersThatTheFontLacks) {
    const std::string hieroglyph = "\xF0\x93\x80\x80";
    const Result<TextOutlines> outlines = make_text_outlines(text_of("a" + hieroglyph + "b"));
    ASSERT_TRUE(outlines);
    EXPECT_EQ(outlines->letter_of_mesh, (std::vector<int>{0, 1}));
    EXPECT_THAT(outlines->notes,
                testing::ElementsAre(HasSubstr("DejaVuSans.ttf has no glyph for U+13000; it is left out")));
}

TEST(TextOutline, SaysWhatWouldBeRight) {
    const TemporaryFolder folder;
    const std::string not_a_font = folder / "not_a_font.ttf";
    write_bytes(not_a_font, "text");
    TextSettings size = text_of("a"), tolerance = text_of("a");
    size.size = -1;
    tolerance.tolerance = std::numeric_limits<float>::infinity();
    const std::pair<TextSettings, std::string> kCases[] = {
        {text_of(""), "text: it is empty; give at least one character"},
        {text_of(std::string(10001, 'a')), "text: 10001 bytes; it may have at most 10000"},
        {text_of(" \n "), "draws nothing for \" \n \""},
        {size, "text: size is -1; it must be a number above 0"},
        {tolerance, "text: tolerance is inf; it must be 0 or a number above"},
        {text_of("a", "No Such Family"), "font \"No Such Family\" is not installed; the nearest is \"DejaVu Sans\""},
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
