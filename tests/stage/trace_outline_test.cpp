#include "stage/assets/trace_outline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

#include "outline_inside.h"
#include "random_seed.h"

using namespace stage;
using namespace stage_test;

namespace {

// A mask with pixels of 200 where the rule holds for the centre, else 100. Coordinates are pixels from the lower left
// corner.
Mask mask_of(int width, int height, const std::function<bool(double, double)>& rule) {
    Mask mask{width, height, {}, 128};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) mask.bytes.push_back(rule(x + 0.5, y + 0.5) ? 200 : 100);
    return mask;
}

using Rule = bool (*)(double x, double y);
const std::tuple<const char*, Rule, size_t> kTraceCases[] = {
    // name, mask of 128 × 128 pixels, meshes
    // A disc, two rings, and the fourth ring cut into the four corners.
    {"rings in rings", [](double x, double y) { return static_cast<int>(std::hypot(x - 64, y - 64) / 12) % 2 == 0; },
     3 + 4},
    {"the lower left quarter", [](double x, double y) { return x < 64 && y < 64; }, 1},
};

TEST(TraceOutline, EnclosesThePixelsOfTheMask) {
    const tovu::RandomSeed seed;
    std::mt19937 random(seed.value);
    std::uniform_real_distribution<double> place(1, 127);
    for (const auto& [name, rule, meshes] : kTraceCases) {
        SCOPED_TRACE(name);
        const auto outlines = trace_outlines(mask_of(128, 128, rule), 256, 512);
        ASSERT_TRUE(outlines) << outlines.error().message;
        EXPECT_EQ(outlines->size(), meshes);
        int inside = 0;
        for (int i = 0; i < 10000; ++i) {
            const double x = place(random), y = place(random);
            const bool wanted = rule(x, y);
            bool near_border = false;  // the tracer rounds within 1.5 pixels of a border
            for (int k = 0; k < 16; ++k)
                for (const double reach : {0.75, 1.5})
                    near_border |= rule(x + reach * std::cos(k * 0.3927), y + reach * std::sin(k * 0.3927)) != wanted;
            if (near_border) continue;
            inside += wanted;
            ASSERT_EQ(any_encloses(*outlines, (x - 64) * 2, (y - 64) * 4), wanted) << x << ", " << y;
        }
        EXPECT_GT(inside, 200);
    }
}

TEST(TraceOutline, DropsNoise) {
    Mask mask =
        mask_of(32, 32, [](double x, double y) { return (x > 8 && x < 24 && y > 8 && y < 24) || (x < 1 && y < 2); });
    mask.bytes[32 * 16 + 16] = 100;  // a hole of one pixel
    const auto outlines = trace_outlines(mask, 32, 32);
    ASSERT_TRUE(outlines);
    EXPECT_EQ(outlines->size(), 1u);
    EXPECT_TRUE(any_encloses(*outlines, 0.5, 0.5));

    Mask spot = mask_of(4, 4, [](double x, double y) { return x < 1 && y < 1; });
    EXPECT_EQ(trace_outlines(spot, 1, 1).error().message,
              "mask: no area of more than 2 pixels reaches the threshold 128");
    spot.threshold = 201;
    EXPECT_EQ(trace_outlines(spot, 1, 1).error().message,
              "mask: no pixel reaches the threshold 201; the brightest is 200");
}

}  // namespace
