// Pictures in and out of files, and the built-in sprites.
#include <gmock/gmock.h>

#include <cmath>

#include "stage/assets/picture_file.h"
#include "stage/assets/sprites.h"
#include "stage/output/picture_compare.h"
#include "stage/output/png_file.h"
#include "temporary_folder.h"

namespace {

using stage::Picture;
using testing::ElementsAre;
using testing::HasSubstr;

/// Every byte another, so that a swapped row, column or channel shows.
Picture counted_picture(int32_t width, int32_t height, stage::PictureFormat format) {
    Picture picture{width, height, format, {}};
    for (size_t i = 0; i < stage::picture_byte_count(width, height, format); ++i)
        picture.bytes.push_back(static_cast<uint8_t>(i * 7 + 1));
    return picture;
}

std::string text_of(std::initializer_list<int> bytes) {
    std::string text;
    for (const int byte : bytes) text += static_cast<char>(byte);
    return text;
}

/// 1 × 2 pixels of 24 bits, bottom row first: blue, green, red and a byte of padding.
std::string bmp_file() {
    return text_of({'B', 'M', 62, 0, 0, 0, 0, 0,  0, 0, 54, 0, 0, 0, 40, 0, 0, 0, 1, 0, 0,
                    0,   2,   0,  0, 0, 1, 0, 24, 0, 0, 0,  0, 0, 8, 0,  0, 0, 0, 0, 0, 0,
                    0,   0,   0,  0, 0, 0, 0, 0,  0, 0, 0,  0, 3, 2, 1,  0, 6, 5, 4, 0});
}

/// 1 × 2 grey pixels, bottom row first.
std::string tga_file() {
    return text_of({0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 2, 0, 8, 0, 10, 20});
}

/// The same as packets: a run of two would be one; here two of one.
std::string packed_tga_file() {
    return text_of({0, 0, 11, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 2, 0, 8, 0, 0x80, 10, 0x80, 20});
}

class PictureFormats : public testing::TestWithParam<stage::PictureFormat> {};

TEST_P(PictureFormats, ComeBackFromAPngAsTheyWent) {
    const TemporaryFolder folder;
    const Picture picture = counted_picture(3, 5, GetParam());
    const stage::PngTexts texts = {{"Renderer", "a name"}, {"Title", "two\nlines"}};
    ASSERT_TRUE(stage::write_png(folder / "a.png", picture, texts));
    ASSERT_TRUE(stage::write_png(folder / "b.png", picture, texts));
    EXPECT_EQ(file_bytes(folder / "a.png"), file_bytes(folder / "b.png"));

    const auto read = stage::read_picture(folder / "a.png");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(3, read->width);
    EXPECT_EQ(5, read->height);
    EXPECT_EQ(GetParam(), read->format);
    EXPECT_EQ(picture.bytes, read->bytes);
    EXPECT_EQ(texts, *stage::read_png_texts(folder / "a.png"));
}

INSTANTIATE_TEST_SUITE_P(All, PictureFormats,
                         testing::Values(stage::kPictureLuminance, stage::kPictureLuminanceAlpha, stage::kPictureRgb,
                                         stage::kPictureRgba));

TEST(PictureFile, TheBottomRowComesFirst) {
    const TemporaryFolder folder;
    write_bytes(folder / "a.bmp", bmp_file());
    write_bytes(folder / "a.tga", tga_file());
    write_bytes(folder / "b.tga", packed_tga_file());
    const auto bmp = stage::read_picture(folder / "a.bmp");
    ASSERT_TRUE(bmp) << bmp.error().message;
    EXPECT_EQ(stage::kPictureRgb, bmp->format);
    EXPECT_THAT(bmp->bytes, ElementsAre(1, 2, 3, 4, 5, 6));
    for (const char* name : {"a.tga", "b.tga"}) {
        const auto tga = stage::read_picture(folder / name);
        ASSERT_TRUE(tga) << tga.error().message;
        EXPECT_EQ(stage::kPictureLuminance, tga->format);
        EXPECT_THAT(tga->bytes, ElementsAre(10, 20));
    }
}

/// 16 × 8 pixels of one grey, the shortest that a JPEG can be: one block of luminance with only a DC value.
std::string jpeg_file() {
    std::string file = text_of({0xFF, 0xD8, 0xFF, 0xDB, 0, 67, 0});
    file += std::string(64, '\1');                                                 // quantisation by 1
    file += text_of({0xFF, 0xC0, 0, 11, 8, 0, 8, 0, 8, 1, 1, 0x11, 0});            // 8 × 8, one component
    file += text_of({0xFF, 0xC4, 0, 20, 0x00, 1}) + std::string(15, '\0') + '\6';  // DC code "0": 6 bits follow
    file += text_of({0xFF, 0xC4, 0, 20, 0x10, 1}) + std::string(15, '\0') + '\0';  // AC code "0": end of block
    file += text_of({0xFF, 0xDA, 0, 8, 1, 1, 0x00, 0, 63, 0});
    // DC: "0" and 40 in six bits, AC: "0": 0 101000 0; 40/8 = 5 above mid grey.
    return file + text_of({0x50, 0xFF, 0xD9});
}

TEST(PictureFile, JpegIsRead) {
    const std::string file = jpeg_file();
    const auto jpeg = stage::decode_picture({reinterpret_cast<const uint8_t*>(file.data()), file.size()}, "a.jpg");
    ASSERT_TRUE(jpeg) << jpeg.error().message;
    EXPECT_EQ(8, jpeg->width);
    EXPECT_EQ(stage::kPictureLuminance, jpeg->format);
    EXPECT_THAT(jpeg->bytes, testing::Each(128 + 5));
}

struct BadFile {
    const char* name;
    std::string bytes;
    const char* problem;
};

std::string png_bytes(int32_t width, int32_t height) {
    const TemporaryFolder folder;
    EXPECT_TRUE(stage::write_png(folder / "a.png", counted_picture(width, height, stage::kPictureRgba)));
    return file_bytes(folder / "a.png");
}

TEST(PictureFile, EveryFaultIsNamed) {
    std::string too_wide = tga_file();
    too_wide[12] = 1;
    too_wide[13] = 64;  // 16385 pixels
    std::string damaged = png_bytes(64, 64);
    damaged[41] = static_cast<char>(damaged[41] ^ 0x7F);  // in the compressed pixels' header
    const std::string png = png_bytes(64, 64);
    const BadFile files[] = {
        {"empty", "", "not a PNG"},
        {"text", "[scene]\nname = 'not a picture at all'\n", "not a PNG"},
        {"png cut in its pixels", png.substr(0, png.size() / 2), "too early"},
        {"png cut before its end", png.substr(0, png.size() - 20), "too early"},
        {"jpeg cut in its pixels", jpeg_file().substr(0, jpeg_file().size() - 3), "too early"},
        {"bmp cut", bmp_file().substr(0, 57), "too early"},
        {"tga cut", tga_file().substr(0, 19), "too early"},
        {"packed tga cut", packed_tga_file().substr(0, 21), "too early"},
        {"damaged", damaged, "damaged"},
        {"too wide", too_wide, "16385 x 2 pixels, each side must be 1 to 16384"},
    };
    const TemporaryFolder folder;
    for (const BadFile& file : files) {
        write_bytes(folder / "some.picture", file.bytes);
        const auto read = stage::read_picture(folder / "some.picture");
        ASSERT_FALSE(read) << file.name;
        EXPECT_THAT(read.error().message, HasSubstr("some.picture: ")) << file.name;
        EXPECT_THAT(read.error().message, HasSubstr(file.problem)) << file.name;
    }
    EXPECT_THAT(stage::read_picture(folder / "none.png").error().message,
                HasSubstr("none.png: can't be read: No such"));
    EXPECT_THAT(stage::read_picture(folder.path()).error().message, HasSubstr("a folder"));
}

TEST(PictureFile, AFailedWriterLeavesWhatWasThere) {
    const TemporaryFolder folder;
    const Picture picture = counted_picture(2, 2, stage::kPictureRgb);
    EXPECT_THAT(stage::write_png(folder / "none/a.png", picture).error().message,
                HasSubstr("none/a.png: can't be written"));
    EXPECT_THAT(stage::write_png(folder / "a.png", {2, 2, stage::kPictureRgb, {1}}).error().message,
                HasSubstr("a.png"));
    EXPECT_FALSE(stage::write_png(folder / "a.png", picture, {{std::string(), "no keyword"}}))
        << "libpng's own refusal";
    std::filesystem::create_directory(folder / "taken");
    EXPECT_FALSE(stage::write_png(folder / "taken", picture));
    std::filesystem::remove(folder / "taken");
    EXPECT_TRUE(folder.is_empty());
    EXPECT_FALSE(stage::read_png_texts(folder / "a.png"));
}

TEST(PictureCompare, MeasuresWhatIsSeen) {
    const Picture base{2, 1, stage::kPictureRgba, {100, 100, 100, 255, 0, 0, 0, 0}};
    const Picture invisible{2, 1, stage::kPictureRgba, {100, 100, 100, 255, 255, 9, 200, 0}};
    EXPECT_EQ(0.0, stage::compare_pictures(base, invisible)->mean);

    const Picture redder{2, 1, stage::kPictureRgba, {120, 100, 100, 255, 0, 0, 0, 0}};
    const auto difference = stage::compare_pictures(base, redder, 19.0);
    EXPECT_DOUBLE_EQ(20.0 / 8, difference->mean);
    EXPECT_DOUBLE_EQ(20.0, difference->largest);
    EXPECT_DOUBLE_EQ(0.5, difference->share_above);
    EXPECT_THAT(difference->image.bytes, ElementsAre(160, 0, 0, 0, 0, 0));
    EXPECT_EQ(0.0, stage::compare_pictures(base, redder, 20.0)->share_above);
    EXPECT_TRUE(stage::within_tolerance(*difference, {.mean = 2.5, .share_above = 0.5}));
    EXPECT_FALSE(stage::within_tolerance(*difference, {.mean = 2.4, .share_above = 0.5}));
    EXPECT_FALSE(stage::within_tolerance(*difference, {.mean = 2.5, .share_above = 0.4}));
    EXPECT_THAT(stage::compare_pictures(base, {1, 1, stage::kPictureRgba, {0, 0, 0, 0}}).error().message,
                HasSubstr("1 x 1 pixels where 2 x 1"));
}

TEST(Sprites, AreSoftAtTheBorderAndSolidInside) {
    constexpr int32_t kSize = 256;
    ASSERT_FALSE(stage::sprite_kinds().empty());
    for (const stage::SpriteKind& kind : stage::sprite_kinds()) {
        const auto sprite = stage::make_sprite(kind.name, kSize);
        ASSERT_TRUE(sprite) << sprite.error().message;
        EXPECT_EQ(stage::kPictureLuminanceAlpha, sprite->format);
        const auto alpha = [&](int32_t x, int32_t y) {
            return sprite->bytes[static_cast<size_t>(y * kSize + x) * 2 + 1];
        };
        int highest = 0;
        int steepest = 0;
        for (int32_t i = 0; i < kSize; ++i) {
            for (const int border : {alpha(i, 0), alpha(i, kSize - 1), alpha(0, i), alpha(kSize - 1, i)})
                EXPECT_EQ(0, border) << kind.name;
            for (int32_t x = 1; x < kSize; ++x) {
                highest = std::max<int>(highest, alpha(x, i));
                steepest = std::max(steepest, std::abs(alpha(x, i) - alpha(x - 1, i)));
            }
        }
        EXPECT_GT(highest, 150) << kind.name;
        EXPECT_LT(steepest, 40) << kind.name << ": an edge is no smoke";
        EXPECT_EQ(sprite->bytes, stage::make_sprite(kind.name, kSize)->bytes) << kind.name;
    }
    EXPECT_THAT(stage::make_sprite("cube").error().message, HasSubstr("'cube'; there are puff, soft"));
    EXPECT_FALSE(stage::make_sprite("puff", 7));
}

}  // namespace
