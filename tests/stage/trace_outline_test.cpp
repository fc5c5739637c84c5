#include "stage/assets/trace_outline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "outline_inside.h"
#include "random_seed.h"

using namespace stage;
using namespace stage_test;
using testing::HasSubstr;

namespace {

// Pixels whose centre the rule takes are 200, the others 100; coordinates are pixels from the lower left corner.
Mask mask_of(int width, int height, const std::function<bool(double, double)>& rule) {
    Mask mask{width, height, {}, 128};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) mask.bytes.push_back(rule(x + 0.5, y + 0.5) ? 200 : 100);
    return mask;
}

using Rule = bool (*)(double x, double y);
const std::tuple<const char*, Rule, size_t> kTraceCases[] = {
    // name, mask of 128 × 128 pixels, meshes
    {"a ring", [](double x, double y) { return std::abs(std::hypot(x - 64, y - 64) - 40) < 12; }, 1},
    // The innermost a disc, and what is left of a fourth one in the four corners.
    {"rings in rings", [](double x, double y) { return static_cast<int>(std::hypot(x - 64, y - 64) / 12) % 2 == 0; },
     3 + 4},
    {"the lower left quarter", [](double x, double y) { return x < 64 && y < 64; }, 1},
    {"all of it", [](double, double) { return true; }, 1},
};

TEST(TraceOutline, EnclosesThePixelsOfTheMask) {
    const tovu::RandomSeed seed;
    std::mt19937 random(seed.value);
    std::uniform_real_distribution<double> place(1, 127);
    for (const auto& [name, rule, meshes] : kTraceCases) {
        SCOPED_TRACE(name);
        TraceSettings settings;
        settings.width = 256;  // two units a pixel
        settings.height = 512;
        const auto outlines = trace_outlines(mask_of(128, 128, rule), settings);
        ASSERT_TRUE(outlines) << outlines.error().message;
        EXPECT_EQ(outlines->size(), meshes);
        int inside = 0;
        for (int i = 0; i < 10000; ++i) {
            const double x = place(random), y = place(random);
            const bool wanted = rule(x, y);
            bool near_border = false;  // within a pixel and a half of one the tracer may round
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

TEST(TraceOutline, DropsSpotsAndTakesTheThreshold) {
    Mask mask =
        mask_of(32, 32, [](double x, double y) { return (x > 8 && x < 24 && y > 8 && y < 24) || (x < 1 && y < 2); });
    mask.bytes[32 * 16 + 16] = 100;  // a hole of one pixel
    TraceSettings keep_all;
    keep_all.smallest_spot = 0;
    const double hole = 0.5 / 32 * 100;
    EXPECT_EQ(trace_outlines(mask, {})->size(), 1u);
    EXPECT_TRUE(any_encloses(*trace_outlines(mask, {}), hole, hole));
    EXPECT_EQ(trace_outlines(mask, keep_all)->size(), 2u);
    EXPECT_FALSE(any_encloses(*trace_outlines(mask, keep_all), hole, hole));
    mask.threshold = 200;
    EXPECT_EQ(trace_outlines(mask, {})->size(), 1u);
    mask.threshold = 100;  // everything
    EXPECT_NEAR(box_of(*trace_outlines(mask, {})).max_x, 50, 1e-4);
}

TEST(TraceOutline, SaysWhatWouldBeRight) {
    const Mask sound = mask_of(4, 4, [](double, double) { return true; });
    Mask too_wide = sound, too_short = sound, dark = sound;
    too_wide.width = 16385;
    too_short.bytes.pop_back();
    dark.threshold = 201;
    Mask spot = mask_of(4, 4, [](double x, double y) { return x < 1 && y < 1; });
    const auto with = [](auto member, auto value) {
        TraceSettings settings;
        settings.*member = value;
        return settings;
    };
    const std::tuple<Mask, TraceSettings, const char*> kCases[] = {
        {{}, {}, "mask: 0 × 0 pixels; each side must be from 1 to 16384"},
        {too_wide, {}, "mask: 16385 × 4 pixels; each side must be from 1 to 16384"},
        {too_short, {}, "mask: 15 bytes; 4 × 4 pixels must have 16"},
        {dark, {}, "mask: no pixel reaches the threshold 201; the brightest is 200"},
        {spot, {}, "mask: nothing but spots of at most smallest_spot, 2, pixels"},
        {sound, with(&TraceSettings::width, 0.0f), "trace: width is 0; it must be a number above 0"},
        {sound, with(&TraceSettings::height, std::numeric_limits<float>::infinity()), "trace: height is inf"},
        {sound, with(&TraceSettings::tolerance, -1.0f), "trace: tolerance is -1; it must be 0 or a number above"},
        {sound, with(&TraceSettings::smallest_spot, -1), "trace: smallest_spot is -1; it must be 0 or above"},
        {sound, with(&TraceSettings::corner_limit, 2.5), "trace: corner_limit is 2.5; it must be from 0 to 2"},
    };
    for (const auto& [mask, settings, message] : kCases) {
        const auto outlines = trace_outlines(mask, settings);
        ASSERT_FALSE(outlines) << message;
        EXPECT_THAT(outlines.error().message, HasSubstr(message));
    }
}

}  // namespace
