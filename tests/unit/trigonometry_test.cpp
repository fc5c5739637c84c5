// Trigonometry gives a float32 that is right to the last place, whichever C library computes it.
#include "math/trigonometry.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "math/random.h"
#include "particles/emission.h"

namespace tovu {
namespace {

float arc_tangent_of_thirds(float y) {
    return arc_tangent_degrees(y, 3.0f);
}

// Arguments for which float functions, or a result rounded to float once more on the way, are off by one place.
TEST(Trigonometry, RoundsTheDoubleResultOnce) {
    const struct {
        const char* name;
        float (*function)(float);
        float argument;
        double exact;
    } rows[] = {
        {"sine", sine_of, 0.680000007f, 0.62879302958},
        {"sine", sine_of, 3.66999984f, -0.504158407841},
        {"cosine", cosine_of, 1.23000002f, 0.334237709148},
        {"cosine", cosine_of, 4.04999971f, -0.615002602124},
        {"arc sine", arc_sine, 0.0615999997f, 0.0616390238208},
        {"arc sine", arc_sine, 0.103599995f, 0.103786218629},
        {"arc cosine", arc_cosine, 0.0188999996f, 1.55189520184},
        {"arc cosine", arc_cosine, 0.153999999f, 1.41618102748},
        {"arc tangent", arc_tangent_of_thirds, 0.659999967f, 12.4074179193},
        {"arc tangent", arc_tangent_of_thirds, 1.5f, 26.5650511771},
    };
    for (const auto& row : rows) {
        const volatile float argument = row.argument;  // a compiler would compute constants itself, exactly
        EXPECT_EQ(static_cast<float>(row.exact), row.function(argument)) << row.name << " of " << row.argument;
    }
}

TEST(Trigonometry, OfTheConeIsRoundedAtEveryFunction) {
    constexpr float kAcross = 1.25f, kSwing = 2.5f, kPi = 3.1415927f;
    const auto rounded = [](double value) { return static_cast<float>(value); };
    for (unsigned seed = 1; seed <= 500; ++seed) {
        std::srand(seed);
        const double cosine = random_up_to(2.0f * (kAcross / kPi)) - kAcross / kPi;
        const double theta = rounded(std::acos(cosine));
        const double phi = random_up_to(kSwing) - kSwing / 2.0f;
        const float sine = rounded(std::sin(theta));
        std::srand(seed);
        const Vector3 direction = cone_direction(kAcross, kSwing);
        ASSERT_EQ(-rounded(std::cos(theta)), direction.x) << "seed " << seed;
        ASSERT_EQ(sine * rounded(std::cos(phi)), direction.y) << "seed " << seed;
        ASSERT_EQ(sine * rounded(std::sin(phi)), direction.z) << "seed " << seed;
    }
}

}  // namespace
}  // namespace tovu
