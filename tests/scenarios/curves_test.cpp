// The tables of colour and opacity over life that are made from curve texts.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "stage/plugins/parameters.h"
#include "test_host.h"

namespace tovu {
namespace {

std::string line_of(int points) {
    std::string text;
    for (int i = 0; i < points; ++i) text += std::to_string(i / 1000.0) + " " + std::to_string(i / 1000.0) + " ";
    return text;
}

double nothing(double) {
    return 0;
}
double identity(double u) {
    return u;
}
// Rises to 1/2 in the middle: a line, then from a quarter on a cubic that is level at its end.
double roof(double u) {
    const double height = std::min(u, 1 - u);
    const double s = 4 * height - 1;
    return s < 0 ? height : (1 + s + s * s - s * s * s) / 4;
}

const struct {
    const char* name;
    std::string text;
    double (*at)(double u);  // before it is clamped to 0 to 1
} kAlphas[] = {
    {"as registered: with two points the second slope counts as 0", "0.0 1.0 1.0 0.0",
     [](double u) { return 1 - 1.5 * u + 0.5 * u * u; }},
    {"uneven points on a line", "0 0.9 0.1 0.84 0.7 0.48 1 0.3", [](double u) { return 0.9 - 0.6 * u; }},
    {"clamped to 0 and 1", "-1 -2 0 -1 0.5 0.5 1 2", [](double u) { return -1 + 3 * u; }},
    {"extrapolated at both ends", "0.4 0.4 0.5 0.5 0.6 0.6", identity},
    {"the slope at a corner between lines is their mean", "0 0 0.25 0.25 0.5 0.5 0.75 0.25 1 0", roof},
    {"a last x alone is ignored", "0 0.9 0.5 0.6 1 0.3 2", [](double u) { return 0.9 - 0.6 * u; }},
    {"points past the thousandth are ignored", line_of(1000) + "5 0 6 1 7 0", identity},
    {"x falls", "0 1 0.5 1 0.4 1", nothing},
    {"x stays", "0 1 0.1 1 0.2 1 0.3 1 0.4 1 0.9 1 0.9 1", nothing},
    {"one point", "0 1", nothing},
    {"no text", "", nothing},
};

TEST(AlphaTable, SamplesTheCurve) {
    TestHost host;
    const SmokeHandle smoke = host.add_smoke();
    const float* alpha = host.block(smoke).alpha_table.alpha;
    for (const auto& row : kAlphas) {
        SCOPED_TRACE(row.name);
        host.set(smoke, "return_value", row.text);  // a buffer with room for texts longer than the curve's own
        stage::set_slot_bits(host.stage(), smoke.container, kIndex_alpha_curve,
                             host.block(smoke).parameters.return_value);
        stage::notify_changed(host.stage(), smoke.container, kIndex_alpha_curve);
        for (int i = 0; i < 512; ++i) EXPECT_NEAR(std::clamp(row.at(i / 511.0), 0.0, 1.0), alpha[i], 2e-6) << i;
        EXPECT_EQ(0.0f, alpha[512]) << "the entry of a life that is over";
    }
}

const struct {
    const char* name;
    const char* text;
    int entry;
    std::array<int, 3> rgb;
} kColors[] = {
    {"as registered: white", "0.0 1.0 1.0 1.0 1.0 1.0 1.0 1.0", 0, {255, 255, 255}},
    {"as registered: to the end", "0.0 1.0 1.0 1.0 1.0 1.0 1.0 1.0", 1023, {255, 255, 255}},
    {"as registered: the last entry is black", "0.0 1.0 1.0 1.0 1.0 1.0 1.0 1.0", 1024, {0, 0, 0}},
    {"a quarter of the way, truncated", "0 0 1 0.5 1 1 0 0.25", 256, {63, 191, 111}},
    {"a segment begins with its own colour", "0 1 0 0 0.5 0 1 0 1 0 0 1", 512, {0, 255, 0}},
    {"and ends one step short of the next", "0 1 0 0 0.5 0 1 0 1 0 0 1", 511, {0, 254, 0}},
    {"black before the first stop", "0.5 1 1 1 1 1 1 1", 511, {0, 0, 0}},
    {"from the first stop", "0.5 1 1 1 1 1 1 1", 512, {255, 255, 255}},
    {"black from the last stop on", "0 1 1 1 0.5 1 1 1", 512, {0, 0, 0}},
    {"two stops in one entry fill nothing", "0 1 1 1 0.5 1 1 1 0.5004 0 0 1 1 0 0 1", 512, {0, 0, 255}},
    {"a stop before its predecessor fills nothing", "0.8 1 1 1 0.2 1 1 1 0.4 1 1 1", 600, {0, 0, 0}},
    {"one stop is black", "0 1 1 1", 0, {0, 0, 0}},
    {"an incomplete group is ignored", "0 1 1 1 0.5 1 1 1 1 1 1", 600, {0, 0, 0}},
    {"positions and components are clamped to 0 and 1", "-3 7 -2 1 9 7 -2 1", 1023, {255, 0, 255}},
    {"a position of -1 is clamped too", "-1 1 1 1 1 1 1 1", 0, {255, 255, 255}},
    {"a word counts as 0", "0 nan inf 1 1 x y 1", 500, {0, 0, 255}},
};

TEST(ColorTable, SegmentsBetweenStops) {
    TestHost host;
    const SmokeHandle smoke = host.add_smoke();
    for (const auto& row : kColors) {
        host.set(smoke, "color", row.text);
        const uint8_t* rgb = host.block(smoke).color_table.rgb[row.entry];
        EXPECT_EQ(row.rgb, (std::array<int, 3>{rgb[0], rgb[1], rgb[2]})) << row.name;
    }
}

}  // namespace
}  // namespace tovu
