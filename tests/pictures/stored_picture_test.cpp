// Tests of the comparison with stored pictures: its verdicts and the files that it writes.
#include "stored_picture.h"

#include <gmock/gmock.h>

#include "../stage/temporary_folder.h"
#include "stage/assets/picture_file.h"

namespace {

using testing::HasSubstr;

stage::Picture grey(uint8_t value, int32_t size = 4) {
    return {size, size, stage::kPictureRgb, std::vector<uint8_t>(static_cast<size_t>(size * size * 3), value)};
}

class StoredPicture : public testing::Test {
  protected:
    PictureCheck check(const stage::Picture& picture, const char* renderer, bool store = false) {
        return check_stored_picture(folder.path(), "a", picture, renderer, {}, store);
    }
    bool exists(const char* name) const { return std::filesystem::exists(folder / name); }

    TemporaryFolder folder;
};

TEST_F(StoredPicture, DecidesByToleranceAndRenderer) {
    const PictureCheck missing = check(grey(100), "one");
    EXPECT_EQ(PictureVerdict::kMissing, missing.verdict);
    EXPECT_THAT(missing.message, HasSubstr("TOVU_STORE_PICTURES=1"));
    EXPECT_TRUE(exists("a.new.png") && !exists("a.png"));

    EXPECT_EQ(PictureVerdict::kStored, check(grey(100), "one", true).verdict);
    EXPECT_EQ(PictureVerdict::kSame, check(grey(100), "one").verdict);

    const PictureCheck brighter = check(grey(110), "one");  // mean 10 · ¾, as alpha is the same
    EXPECT_EQ(PictureVerdict::kDifferent, brighter.verdict);
    EXPECT_THAT(brighter.message, HasSubstr("mean difference 7.500 (at most 0.5), 0.000 % of the pixels above 12"));
    EXPECT_EQ(grey(110).bytes, stage::read_picture(folder / "a.new.png")->bytes);
    EXPECT_EQ(grey(80).bytes, stage::read_picture(folder / "a.difference.png")->bytes);

    EXPECT_EQ(PictureVerdict::kOtherRenderer, check(grey(110), "two").verdict);
    EXPECT_FALSE(exists("a.new.png") || exists("a.difference.png")) << "left from the comparison before";

    EXPECT_THAT(check(grey(100, 5), "one").message, HasSubstr("5 x 5 pixels; 4 x 4"));
}

}  // namespace
