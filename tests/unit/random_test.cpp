// Random numbers: 15 bits of the C library's generator, one draw for each number.
#include "math/random.h"

#include <gtest/gtest.h>

namespace {

constexpr unsigned kSeed = 12345;

TEST(Random, UpperFifteenBitsShareOutTheLimit) {
    for (const float limit : {0.0f, 1.0f, 100.0f, -5.0f, 0.1f, 1e7f}) {
        SCOPED_TRACE(limit);
        std::srand(kSeed);
        double expected[3];
        for (double& value : expected) value = (std::rand() >> 16) * static_cast<double>(limit) / 32767.0;
        const int behind = std::rand();
        std::srand(kSeed);
        for (const double value : expected) EXPECT_EQ(static_cast<float>(value), tovu::random_up_to(limit));
        EXPECT_EQ(behind, std::rand()) << "one draw each";
    }
}

TEST(Random, ReachesTheLimitOnlyAtTheEnd) {
    EXPECT_EQ(0.0f, tovu::random_share(0, 3));
    EXPECT_EQ(3.0f, tovu::random_share(32767, 3));
    EXPECT_LT(tovu::random_share(32766, 3), 3.0f);
}

TEST(Random, AFractionIsTwoDraws) {
    std::srand(kSeed);
    const int high = std::rand() >> 16;
    const int low = std::rand() >> 16;
    const int behind = std::rand();
    std::srand(kSeed);
    const double fraction = tovu::random_fraction();
    EXPECT_EQ((high * 32768.0 + low) / 1073741824.0, fraction);
    EXPECT_EQ(behind, std::rand());
}

}  // namespace
