// Pictures in and out of files.
#include <gmock/gmock.h>

#include "stage/assets/picture_file.h"
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

TEST(PictureFile, ComesBackFromAPngAsItWent) {
    const TemporaryFolder folder;
    for (const auto format :
         {stage::kPictureLuminance, stage::kPictureLuminanceAlpha, stage::kPictureRgb, stage::kPictureRgba}) {
        SCOPED_TRACE(format);
        const Picture picture = counted_picture(3, 5, format);
        ASSERT_TRUE(stage::write_png(folder / "a.png", picture));
        ASSERT_TRUE(stage::write_png(folder / "b.png", picture));
        EXPECT_EQ(file_bytes(folder / "a.png"), file_bytes(folder / "b.png"));
        const auto read = stage::read_picture(folder / "a.png");
        ASSERT_TRUE(read) << read.error().message;
        EXPECT_THAT(std::vector({read->width, read->height, int32_t{read->format}}), ElementsAre(3, 5, format));
        EXPECT_EQ(picture.bytes, read->bytes);
    }
}

std::string png_file() {
    const TemporaryFolder folder;
    EXPECT_TRUE(stage::write_png(folder / "a.png", counted_picture(64, 64, stage::kPictureRgba)));
    return file_bytes(folder / "a.png");
}

stage::Result<Picture> decode(const std::string& bytes) {
    return stage::decode_picture({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}, "some.picture");
}

TEST(PictureFile, IsReadWithTheBottomRowFirst) {
    const auto picture = decode(bmp_file());
    ASSERT_TRUE(picture) << picture.error().message;
    EXPECT_EQ(stage::kPictureRgb, picture->format);
    EXPECT_EQ((std::vector<uint8_t>{1, 2, 3, 4, 5, 6}), picture->bytes);
}

TEST(PictureFile, EveryFaultIsNamed) {
    std::string too_wide = bmp_file(), damaged = png_file();
    too_wide[18] = 1;
    too_wide[19] = 64;                                    // 16385 pixels
    damaged[41] = static_cast<char>(damaged[41] ^ 0x7F);  // in the compressed pixels' header
    const auto cut = [](const std::string& file, size_t bytes) { return file.substr(0, file.size() - bytes); };
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {"text", "[scene]\nname = 'not a picture at all'\n", "not a PNG"},
        {"png cut in its pixels", cut(png_file(), png_file().size() / 2), "too early"},
        {"png cut before its end", cut(png_file(), 20), "too early"},
        {"bmp cut", cut(bmp_file(), 5), "too early"},
        {"damaged", damaged, "damaged"},
        {"too wide", too_wide, "16385 x 2 pixels, each side must be 1 to 16384"},
    };
    for (const auto& [name, file, problem] : cases) {
        const auto picture = decode(file);
        ASSERT_FALSE(picture) << name;
        EXPECT_THAT(picture.error().message, testing::AllOf(HasSubstr("some.picture: "), HasSubstr(problem))) << name;
    }
    const TemporaryFolder folder;
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
    std::filesystem::create_directory(folder / "taken");
    EXPECT_FALSE(stage::write_png(folder / "taken", picture));
    std::filesystem::remove(folder / "taken");
    EXPECT_TRUE(folder.is_empty());
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

}  // namespace
