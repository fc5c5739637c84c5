// Random numbers: 15 bits of the C library's generator, one draw for each number, two for a fraction.
#include "math/random.h"

#include "expect.h"
#include "random_seed.h"

namespace {

TEST(Random, UpperFifteenBitsShareOutTheLimit) {
    const tovu::RandomSeed seed;
    for (const float limit : {0.0f, 100.0f, -5.0f, 0.1f, 1e7f}) {
        std::srand(seed.value);
        const double r = std::rand() >> 16;
        std::srand(seed.value);
        EXPECT_EQ(static_cast<float>(r * static_cast<double>(limit) / 32767.0), tovu::random_up_to(limit)) << limit;
        EXPECT_EQ(1, tovu::draws_since(seed.value));
    }
    EXPECT_EQ(3.0f, tovu::random_share(32767, 3));
    EXPECT_LT(tovu::random_share(32766, 3), 3.0f);
    std::srand(seed.value);
    const int high = std::rand() >> 16;
    const int low = std::rand() >> 16;
    std::srand(seed.value);
    EXPECT_EQ((high * 32768.0 + low) / 1073741824.0, tovu::random_fraction());
    EXPECT_EQ(2, tovu::draws_since(seed.value));
}

}  // namespace
