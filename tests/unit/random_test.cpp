// Random numbers: 15 bits of the C library's generator, one draw for each number, two for a fraction.
#include "math/random.h"

#include "expect.h"

namespace {

constexpr unsigned kSeed = 12345;

TEST(Random, UpperFifteenBitsShareOutTheLimit) {
    for (const float limit : {0.0f, 100.0f, -5.0f, 0.1f, 1e7f}) {
        std::srand(kSeed);
        const double r = std::rand() >> 16;
        std::srand(kSeed);
        EXPECT_EQ(static_cast<float>(r * static_cast<double>(limit) / 32767.0), tovu::random_up_to(limit)) << limit;
        EXPECT_EQ(1, tovu::draws_since(kSeed));
    }
    EXPECT_EQ(3.0f, tovu::random_share(32767, 3));
    EXPECT_LT(tovu::random_share(32766, 3), 3.0f);
    std::srand(kSeed);
    const int high = std::rand() >> 16;
    const int low = std::rand() >> 16;
    std::srand(kSeed);
    EXPECT_EQ((high * 32768.0 + low) / 1073741824.0, tovu::random_fraction());
    EXPECT_EQ(2, tovu::draws_since(kSeed));
}

}  // namespace
