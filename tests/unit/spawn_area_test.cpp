// Points drawn directly from a shape's area are spread as accepted candidates are.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <random>
#include <vector>

#include "expect.h"
#include "outline_source.h"
#include "random_seed.h"
#include "sources/mask_area.h"
#include "sources/outline_area.h"

namespace {

constexpr int kDraws = 40000;

/// How far counts stray from what is expected, against what chance allows (five standard deviations).
void expect_fits(const std::vector<double>& expected, const std::vector<int>& counted) {
    double chi_square = 0;
    int cells = 0;
    for (size_t i = 0; i < expected.size(); ++i) {
        if (expected[i] == 0) {
            EXPECT_EQ(0, counted[i]) << "cell " << i;
            continue;
        }
        const double difference = counted[i] - expected[i];
        chi_square += difference * difference / expected[i];
        ++cells;
    }
    const double degrees = cells - 1;
    EXPECT_LT(chi_square, degrees + 5 * std::sqrt(2 * degrees) + 1e-6);
}

using Outlines = std::vector<std::vector<Vector3>>;

// Corners of a teeth-up comb whose teeth lean and are a quarter of their distance wide.
std::vector<Vector3> comb(int teeth) {
    std::vector<Vector3> outline = {{7.5f, 0, 0}, {0, 0, 0}};
    for (int i = 0; i < teeth; ++i) {
        const float at = 7 * static_cast<float>(i) / static_cast<float>(teeth);
        const float width = 1.75f / static_cast<float>(teeth);
        outline.insert(outline.end(),
                       {{at, 0.5f, 0}, {at + 0.5f, 4, 0}, {at + 0.5f + width, 4, 0}, {at + width, 0.5f, 0}});
    }
    outline.push_back({7.5f, 0.5f, 0});
    return outline;
}

// Edges from anywhere to anywhere, which cross far more often than pieces are cut for.
std::vector<Vector3> tangle(int corners) {
    std::mt19937 generator(tovu::random_seed());
    std::uniform_real_distribution<float> share(0, 1);
    std::vector<Vector3> outline;
    for (int i = 0; i < corners; ++i) outline.push_back({8 * share(generator), 4 * share(generator), 0});
    return outline;
}

const std::vector<Vector3> kSquare = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
const struct {
    const char* name;
    Outlines outlines;
    bool exact = true;        // the pieces are the area
    int points_a_unit = 150;  // along both axes, to measure the area by
} kShapes[] = {
    {"an L", {{{0, 0, 0}, {4, 0, 0}, {4, 2, 0}, {2, 2, 0}, {2, 4, 0}, {0, 4, 0}}}},
    {"a square within another counts once", {kSquare, {{1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}}}},
    {"overlapping by a corner", {kSquare, {{3, 3, 0}, {7, 3, 0}, {7, 4, 0}, {3, 4, 0}}}},
    {"a sliver", {{{0, 0, 0}, {8, 4, 0}, {7.75f, 4, 0}}}},
    {"a bow tie", {{{0, 0, 0}, {8, 4, 0}, {8, 0, 0}, {0, 4, 0}}}},
    {"crossing triangles", {{{0, 0, 0}, {6, 1, 0}, {1, 4, 0}}, {{2, 0, 0}, {8, 2, 0}, {3, 4, 0}}}},
    {"the same triangle twice, and its mirror image",
     {{{0, 0, 0}, {6, 1, 0}, {1, 4, 0}}, {{0, 0, 0}, {6, 1, 0}, {1, 4, 0}}, {{8, 0, 0}, {2, 1, 0}, {7, 4, 0}}}},
    {"many spans in one slice", {comb(20)}},
    {"many spans across many", {comb(12), {{8, 4, 0}, {0, 3.5f, 0}, {8, 3, 0}, {0, 2.5f, 0}, {8, 2, 0}, {0, 1, 0}}}},
    {"edges that cross everywhere", {tangle(600)}, false, 40},
};

bool inside(const OutlineSource& made, float x, float y) {
    return tovu::contains({tovu::InsideTest::kTestOutlines, &made.source, nullptr}, {x, y, 0});
}

// The area in each unit cell of 8 × 4, by a fine raster.
std::vector<double> area_of_cells(const OutlineSource& outlines, int fine) {
    const auto at = [fine](int i, float share) { return (static_cast<float>(i) + share) / static_cast<float>(fine); };
    std::vector<double> areas(32);
    for (int y = 0; y < 4 * fine; ++y)
        for (int x = 0; x < 8 * fine; ++x)
            if (inside(outlines, at(x, 0.49f), at(y, 0.51f)))
                areas[static_cast<size_t>(y / fine * 8 + x / fine)] += 1.0 / (fine * fine);
    return areas;
}

TEST(OutlineArea, DrawsUniformlyFromTheShape) {
    const tovu::RandomSeed seed;
    tovu::OutlineArea area;  // one for all: what an earlier shape left in it does no harm
    for (const auto& row : kShapes) {
        SCOPED_TRACE(row.name);
        OutlineSource made(row.outlines, 0);
        ASSERT_TRUE(build_area(area, made.source));
        std::vector<double> expected = area_of_cells(made, row.points_a_unit);
        const double measured = std::accumulate(expected.begin(), expected.end(), 0.0);
        EXPECT_NEAR(measured, area.total, (row.exact ? 0.01 : 3) * measured);
        for (double& cell : expected) cell *= kDraws / measured;
        std::srand(seed.value);
        std::vector<int> counted(32);
        int rejected = 0;
        for (int accepted = 0; accepted < kDraws;) {
            const tovu::PlanePoint p = draw_from_area(area);
            if (!inside(made, p.across, p.along)) {
                ASSERT_LT(++rejected, row.exact ? kDraws / 100 : 3 * kDraws);
                continue;
            }
            ++accepted;
            ++counted[static_cast<size_t>(static_cast<int>(p.along) * 8 + static_cast<int>(p.across))];
        }
        expect_fits(expected, counted);
    }
}

TEST(OutlineArea, FollowsTheReferencePlaneAndNeedsAnArea) {
    const struct {
        std::vector<Vector3> outline;
        int32_t ref_plane;
        double area;
    } rows[] = {{{{0, 9, 0}, {4, 9, 0}, {0, 9, 4}}, 1, 8},
                {{{0, 9, 0}, {4, 9, 0}, {0, 9, 4}}, 0, 0},
                {{{0, 0, 0}, {1, 1, 0}, {3, 3, 0}}, 0, 0},
                {{{1, 1, 0}}, 0, 0}};
    for (const auto& row : rows) {
        OutlineSource made({row.outline}, row.ref_plane);
        tovu::OutlineArea area;
        EXPECT_EQ(row.area > 0, build_area(area, made.source));
        EXPECT_NEAR(row.area, area.total, 1e-6);
    }
}

const struct {
    const char* name;
    int32_t width, height, bytes_per_pixel;
    std::vector<int> lit;  // rows from the first, pixels from the left
    uint64_t bytes_held;   // of the pixel data; 0: all
} kMasks[] = {
    {"one pixel inside", 3, 3, 3, {0, 0, 0, 0, 1, 0, 0, 0, 0}, 0},
    {"the last column goes on", 3, 2, 1, {0, 0, 1, 1, 0, 0}, 0},
    {"the last row goes on", 2, 3, 4, {1, 0, 0, 0, 1, 0}, 0},
    {"the last pixel fills its corner", 3, 3, 2, {0, 1, 0, 0, 0, 0, 0, 0, 1}, 0},
    {"all", 4, 2, 4, {1, 1, 1, 1, 1, 1, 1, 1}, 0},
    {"what the data no longer hold is dark", 3, 3, 2, {0, 1, 0, 1, 0, 1, 1, 1, 1}, 9},
};

tovu::ImageReader mask_of(int32_t width, int32_t height, int32_t bytes_per_pixel, const uint8_t* pixels,
                          uint64_t held) {
    tovu::ImageReader mask{{}, pixels, held};
    mask.source.width = width;
    mask.source.height = height;
    mask.source.bytes_per_pixel = bytes_per_pixel;
    return mask;
}

TEST(MaskArea, DrawsUniformlyFromLitPixels) {
    const tovu::RandomSeed seed;
    for (const auto& row : kMasks) {
        SCOPED_TRACE(row.name);
        std::vector<uint8_t> pixels;
        for (const int lit : row.lit) {
            pixels.push_back(lit ? 3 : 0);
            pixels.resize(pixels.size() + static_cast<size_t>(row.bytes_per_pixel) - 1,
                          255);  // the rest counts for nothing
        }
        const uint64_t held = row.bytes_held ? row.bytes_held : pixels.size();
        tovu::ImageReader mask = mask_of(row.width, row.height, row.bytes_per_pixel, pixels.data(), held);
        set_rect(mask.source, -10, 5, -10 + 2 * static_cast<float>(row.width), 5 + 3 * static_cast<float>(row.height));
        // Cells of one pixel over twice the rectangle: beyond the last column and row these go on.
        std::vector<double> expected;
        for (int y = 0; y < 2 * row.height; ++y)
            for (int x = 0; x < 2 * row.width; ++x) {
                const auto pixel =
                    static_cast<size_t>(std::min(y, row.height - 1) * row.width + std::min(x, row.width - 1));
                const bool dark = pixel * static_cast<size_t>(row.bytes_per_pixel) >= held || !row.lit[pixel];
                expected.push_back(dark ? 0 : 1);
            }
        const auto lit_cells = static_cast<double>(std::count(expected.begin(), expected.end(), 1.0));
        for (double& cell : expected) cell *= kDraws / lit_cells;
        tovu::MaskArea area;
        ASSERT_TRUE(build_area(area, mask));
        EXPECT_EQ(lit_cells, area.total);
        std::srand(seed.value);
        std::vector<int> counted(expected.size());
        for (int i = 0; i < kDraws; ++i) {
            const tovu::PlanePoint p = draw_from_area(area, mask);
            const int x = static_cast<int>((p.across + 10) / 2);
            const int y = static_cast<int>((p.along - 5) / 3);
            ASSERT_TRUE(x >= 0 && x < 2 * row.width && y >= 0 && y < 2 * row.height) << p.across << ", " << p.along;
            ++counted[static_cast<size_t>(y * 2 * row.width + x)];
        }
        expect_fits(expected, counted);
    }
}

TEST(MaskArea, NeedsALitPixel) {
    const std::vector<uint8_t> dark(12);
    for (const uint8_t* pixels : {dark.data(), static_cast<const uint8_t*>(nullptr)}) {
        tovu::MaskArea area;
        EXPECT_FALSE(build_area(area, mask_of(4, 3, 1, pixels, dark.size())));
    }
}

TEST(SpawnAreas, DrawSixValuesForAPoint) {
    const tovu::RandomSeed seed;
    OutlineSource made({kSquare}, 0);
    tovu::OutlineArea outline_area;
    ASSERT_TRUE(build_area(outline_area, made.source));
    const uint8_t lit = 1;
    const tovu::ImageReader mask = mask_of(1, 1, 1, &lit, 1);
    tovu::MaskArea mask_area;
    ASSERT_TRUE(build_area(mask_area, mask));
    std::srand(seed.value);
    draw_from_area(outline_area);
    EXPECT_EQ(6, tovu::draws_since(seed.value));
    std::srand(seed.value);
    draw_from_area(mask_area, mask);
    EXPECT_EQ(6, tovu::draws_since(seed.value));
}

}  // namespace
