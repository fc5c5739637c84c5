#include "stage/assets/text_outline.h"

#include <gmock/gmock.h>

#include "outline_inside.h"
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
    // In DejaVu Sans, H is 1493 of 2048 units high and its left stem starts at 201. Kerning makes A and V overlap.
    // Baselines are 1.1640625 em apart.
    const auto box_with = [](const char* text, TextAlignment alignment = TextAlignment::kLeft) {
        return box_of(meshes_of({text, "", 2048, alignment}));
    };
    const Box left = box_with("HH"), centre = box_with("HH", TextAlignment::kCentre);
    EXPECT_NEAR(left.min_x, 201, 1e-3);
    EXPECT_NEAR(left.min_y, 0, 1e-3);
    EXPECT_NEAR(left.max_y, 1493, 1e-3);
    EXPECT_NEAR(centre.min_x, -centre.max_x, 1);  // both sides of an H have the same bearing
    EXPECT_NEAR(box_with("HH", TextAlignment::kRight).max_x, -201, 1);
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
