// Random numbers: 15 bits of the C library's generator, one draw for each number, two for a fraction.
#include "math/random.h"

#include "expect.h"
#include "random_seed.h"

namespace {

TEST(Random, FractionHasThirtyBits) {
    const tovu::RandomSeed seed;
    std::srand(seed.value);
    const int high = std::rand() >> 16;
    const int low = std::rand() >> 16;
    std::srand(seed.value);
    EXPECT_EQ((high * 32768.0 + low) / 1073741824.0, tovu::random_fraction());
    EXPECT_EQ(2, tovu::draws_since(seed.value));
    EXPECT_EQ(3.0f, tovu::random_share(32767, 3)) << "the limit itself";
}

}  // namespace
