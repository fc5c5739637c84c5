#include "stage/assets/text_outline.h"

#include <fmt/format.h>
#include <ft2build.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include FT_FREETYPE_H

#include "outline_inside.h"
#include "stage/assets/font_file.h"
#include "temporary_folder.h"

using namespace stage;
using namespace stage_test;
using testing::HasSubstr;

namespace {

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
    FT_Done_FreeType(library);  // frees the face too
    return coverage;
}

TEST(TextOutline, EnclosesWhatTheFontRendererFills) {
    const std::tuple<const char*, char32_t, const char*> characters[] = {
        {"", U'8', "8"}, {"", U'@', "@"}, {"", U'Å', "Å"}, {"DejaVu Serif:bold", U'Q', "Q"}};
    for (const auto& [font, character, utf8] : characters) {
        SCOPED_TRACE(fmt::format("{} in {}", utf8, font));
        const std::vector<int> coverage = rendered(font, character);
        const std::vector<Mesh> meshes = meshes_of({utf8, font, kPixels, TextAlignment::kLeft});
        int inside = 0;
        for (int i = 0; i < kSide * kSide; i += 47) {  // 47 does not divide the side: every column is sampled
            const int covered = coverage[static_cast<size_t>(i)], x = i % kSide - kLeft, y = i / kSide - kBelow;
            if (covered != 0 && covered != 255) continue;  // on the border
            inside += covered == 255;
            ASSERT_EQ(any_encloses(meshes, x + 0.5, y + 0.5), covered == 255) << "at pixel " << x << ", " << y;
        }
        EXPECT_GT(inside, 100);
    }
}

TEST(TextOutline, SeparatePartsOfLettersAreMeshes) {
    const std::pair<const char*, size_t> cases[] = {
        {"O8@", 3},          // holes are no meshes
        {"iä%", 2 + 3 + 3},  //
        {"ffi", 1 + 1 + 2},  // no ligature
        {"a\xCC\x88", 3},    // a combining mark
    };
    for (const auto& [text, count] : cases) EXPECT_EQ(meshes_of({text, ""}).size(), count) << text;
}

TEST(TextOutline, IsPlacedBySizeAlignmentAndKerning) {
    // In DejaVu Sans H is 1493 of 2048 units tall and its left stem starts at 201; kerning makes A and V overlap;
    // baselines are 1.1640625 em apart.
    const auto box_with = [](const char* text, TextAlignment alignment = TextAlignment::kLeft) {
        return box_of(meshes_of({text, "", 2048, alignment}));
    };
    const Box left = box_with("HH"), centre = box_with("HH", TextAlignment::kCentre),
              right = box_with("HH", TextAlignment::kRight);
    EXPECT_NEAR(left.min_x, 201, 1e-3);
    EXPECT_NEAR(left.min_y, 0, 1e-3);
    EXPECT_NEAR(left.max_y, 1493, 1e-3);
    EXPECT_NEAR(centre.min_x, -centre.max_x, 1);  // both sides of an H have the same bearing
    EXPECT_NEAR(right.max_x, -left.min_x, 1);
    EXPECT_NEAR(box_with("H\nH").min_y, -1.1640625 * 2048, 1);
    EXPECT_LT(box_with("AVAVAV").max_x, box_with("AAAVVV").max_x - 300);
}

TEST(TextOutline, ErrorsNameTheFont) {
    const TemporaryFolder folder;
    const std::string not_a_font = folder / "not_a_font.ttf";
    write_bytes(not_a_font, "text");
    const std::pair<TextSettings, std::string> cases[] = {
        {{std::string(10001, 'a'), ""}, "text: 10001 bytes; at most 10000 are allowed"},
        {{" \n ", ""}, "DejaVuSans.ttf draws nothing for \" \n \""},
        {{"a", "No Such Family"}, "font \"No Such Family\" is not installed; the nearest is \"DejaVu Sans\""},
        {{"a", "/no/such/file.ttf"}, "font /no/such/file.ttf: there is no such file"},
        {{"a", not_a_font}, not_a_font + ": not a font file that FreeType reads"},
    };
    for (const auto& [settings, message] : cases) {
        const Result<TextOutlines> outlines = make_text_outlines(settings);
        ASSERT_FALSE(outlines) << message;
        EXPECT_THAT(outlines.error().message, HasSubstr(message));
    }
}

}  // namespace
