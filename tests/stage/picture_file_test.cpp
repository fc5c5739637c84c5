// Reading and writing of picture files.
#include <gmock/gmock.h>

#include "stage/assets/picture_file.h"
#include "stage/output/picture_compare.h"
#include "stage/output/png_file.h"
#include "temporary_folder.h"

namespace {

using stage::Picture;
using testing::ElementsAre;
using testing::HasSubstr;

/// A picture with different bytes, so that a swapped row, column or channel is found.
Picture counted_picture(int32_t width, int32_t height, stage::PictureFormat format) {
    Picture picture{width, height, format, {}};
    for (size_t i = 0; i < stage::picture_byte_count(width, height, format); ++i)
        picture.bytes.push_back(static_cast<uint8_t>(i * 7 + 1));
    return picture;
}

/// A TGA of 1 × 2 pixels of 24 bits, bottom row first: blue, green, red. Bytes 12 and 13 hold the width.
const std::string kTga({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 2, 0, 24, 0, 3, 2, 1, 6, 5, 4});

TEST(PictureFile, PngKeepsEightBits) {
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

TEST(PictureFile, PngKeepsSixteenBits) {
    const stage::DeepPicture picture{2, 2, {0, 1, 256, 65535, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}};
    const TemporaryFolder folder;
    ASSERT_TRUE(stage::write_png(folder / "a.png", picture, {{"Scene", "Wörter"}}));
    const auto read = stage::read_deep_picture(folder / "a.png");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(picture.channels, read->channels);
    EXPECT_THAT(file_bytes(folder / "a.png"), HasSubstr("Wörter"));
}

stage::Result<Picture> decode(const std::string& bytes) {
    return stage::decode_picture({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}, "some.picture");
}

TEST(PictureFile, IsReadWithTheBottomRowFirst) {
    const auto picture = decode(kTga);
    ASSERT_TRUE(picture) << picture.error().message;
    EXPECT_EQ(stage::kPictureRgb, picture->format);
    EXPECT_EQ((std::vector<uint8_t>{1, 2, 3, 4, 5, 6}), picture->bytes);
}

TEST(PictureFile, EveryFaultIsNamed) {
    std::string too_wide = kTga;
    too_wide[13] = 64;  // 16385 pixels
    const std::pair<std::string, const char*> cases[] = {
        {"[scene]\nname = 'not a picture at all'\n", "not a PNG"},
        {kTga.substr(0, 21), "too early"},
        {too_wide, "16385 x 2 pixels; each side must be 1 to 16384"},
    };
    for (const auto& [file, problem] : cases) {
        const auto picture = decode(file);
        ASSERT_FALSE(picture) << problem;
        EXPECT_THAT(picture.error().message, testing::AllOf(HasSubstr("some.picture: "), HasSubstr(problem)));
    }
}

TEST(PictureFile, AFailedWriteLeavesTheOldFile) {
    const TemporaryFolder folder;
    const Picture picture = counted_picture(2, 2, stage::kPictureRgb);
    EXPECT_THAT(stage::write_png(folder / "none/a.png", picture).error().message,
                HasSubstr("none/a.png: cannot be written"));
    std::filesystem::create_directory(folder / "taken");
    EXPECT_FALSE(stage::write_png(folder / "taken", picture));
    std::filesystem::remove(folder / "taken");
    EXPECT_TRUE(folder.is_empty());
}

TEST(PictureCompare, MeasuresVisibleDifferences) {
    const Picture base{2, 1, stage::kPictureRgba, {100, 100, 100, 255, 0, 0, 0, 0}};
    const Picture invisible{2, 1, stage::kPictureRgba, {100, 100, 100, 255, 255, 9, 200, 0}};
    EXPECT_EQ(0.0, stage::compare_pictures(base, invisible)->mean);

    const Picture redder{2, 1, stage::kPictureRgba, {120, 100, 100, 255, 0, 0, 0, 0}};
    const auto difference = stage::compare_pictures(base, redder, 19.0);
    EXPECT_DOUBLE_EQ(20.0 / 8, difference->mean);
    EXPECT_DOUBLE_EQ(20.0, difference->largest);
    EXPECT_DOUBLE_EQ(0.5, difference->share_above);
    EXPECT_THAT(difference->image.bytes, ElementsAre(160, 0, 0, 0, 0, 0));
    EXPECT_TRUE(stage::within_tolerance(*difference, {.mean = 2.5, .share_above = 0.5}));
    EXPECT_FALSE(stage::within_tolerance(*difference, {.mean = 2.4, .share_above = 0.5}));
    EXPECT_FALSE(stage::within_tolerance(*difference, {.mean = 2.5, .share_above = 0.4}));
    EXPECT_THAT(stage::compare_pictures(base, {1, 1, stage::kPictureRgba, {0, 0, 0, 0}}).error().message,
                HasSubstr("1 x 1 pixels; 2 x 1"));
}

}  // namespace
