// Points drawn from the area of a shape have the distribution of accepted candidates.
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

#include "expect.h"
#include "outline_source.h"
#include "random_seed.h"
#include "sources/mask_area.h"
#include "sources/outline_area.h"

namespace tovu {
namespace {

constexpr int kDraws = 40000;

/// draw: returns the cell of a point, or -1 for a point outside the shape. sizes: area of each cell within the shape.
/// Tests the counts by chi-square with a limit of five standard deviations.
template <class Draw>
void expect_uniform(const std::vector<double>& sizes, int max_rejected, Draw draw) {
    const RandomSeed seed;
    std::srand(seed.value);
    draw();
    EXPECT_EQ(6, draws_since(seed.value));
    std::srand(seed.value);
    std::vector<int> counted(sizes.size());
    for (int accepted = 0, rejected = 0; accepted < kDraws;) {
        const int cell = draw();
        if (cell >= 0) ++counted.at(static_cast<size_t>(cell));
        ++(cell >= 0 ? accepted : rejected);
        ASSERT_LE(rejected, max_rejected);
    }
    const double total = std::accumulate(sizes.begin(), sizes.end(), 0.0);
    double chi_square = 0;
    double degrees = -1;
    for (size_t i = 0; i < sizes.size(); ++i) {
        const double expected = sizes[i] * kDraws / total;
        if (expected == 0) {
            EXPECT_EQ(0, counted[i]) << "cell " << i;
            continue;
        }
        chi_square += (counted[i] - expected) * (counted[i] - expected) / expected;
        ++degrees;
    }
    EXPECT_LT(chi_square, degrees + 5 * std::sqrt(2 * degrees) + 1e-6);
}

using Outlines = std::vector<std::vector<Vector3>>;

/// A comb of leaning teeth, each a quarter as wide as their distance.
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

/// Random edges with more crossings than the number of pieces allows.
std::vector<Vector3> tangle(size_t corners) {
    std::mt19937 generator(random_seed());
    std::uniform_real_distribution<float> share(0, 1);
    std::vector<Vector3> outline;
    outline.reserve(corners);
    for (size_t i = 0; i < corners; ++i) outline.push_back({8 * share(generator), 4 * share(generator), 0});
    return outline;
}

const std::vector<Vector3> kSquare = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
const std::vector<Vector3> kTriangle = {{0, 0, 0}, {6, 1, 0}, {1, 4, 0}};
const struct {
    const char* name;
    Outlines outlines;  // within 8 × 4
    bool exact = true;  // the pieces are the area
} kShapes[] = {
    {"a square within another counts once", {kSquare, {{1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}}}},
    {"overlapping by a corner", {kSquare, {{3, 3, 0}, {7, 3, 0}, {7, 4, 0}, {3, 4, 0}}}},
    {"a sliver", {{{0, 0, 0}, {8, 4, 0}, {7.75f, 4, 0}}}},
    {"a bow tie", {{{0, 0, 0}, {8, 4, 0}, {8, 0, 0}, {0, 4, 0}}}},
    {"crossing triangles", {kTriangle, {{2, 0, 0}, {8, 2, 0}, {3, 4, 0}}}},
    {"the same triangle twice, and its mirror image", {kTriangle, kTriangle, {{8, 0, 0}, {2, 1, 0}, {7, 4, 0}}}},
    {"many spans across many", {comb(12), {{8, 4, 0}, {0, 3.5f, 0}, {8, 3, 0}, {0, 2.5f, 0}, {8, 2, 0}, {0, 1, 0}}}},
    {"edges that cross everywhere", {tangle(600)}, false},
};

TEST(OutlineArea, DrawsUniformlyFromTheShape) {
    OutlineArea area;  // reused for each shape, which overwrites what it needs
    for (const auto& row : kShapes) {
        SCOPED_TRACE(row.name);
        const OutlineSource made(row.outlines, 0);
        const auto cell_of = [&made](float x, float y) {
            const bool inside = contains({InsideTest::kTestOutlines, &made.source, nullptr}, {x, y, 0});
            return inside ? static_cast<int>(y) * 8 + static_cast<int>(x) : -1;
        };
        std::vector<double> sizes(32);
        const int fine = row.exact ? 150 : 40;  // points of a raster a unit
        for (int y = 0; y < 4 * fine; ++y)
            for (int x = 0; x < 8 * fine; ++x) {
                const int cell = cell_of((static_cast<float>(x) + 0.49f) / static_cast<float>(fine),
                                         (static_cast<float>(y) + 0.51f) / static_cast<float>(fine));
                if (cell >= 0) sizes[static_cast<size_t>(cell)] += 1.0 / (fine * fine);
            }
        ASSERT_TRUE(build_area(area, made.source));
        const double measured = std::accumulate(sizes.begin(), sizes.end(), 0.0);
        EXPECT_NEAR(measured, area.total, (row.exact ? 0.01 : 3) * measured);
        expect_uniform(sizes, row.exact ? kDraws / 100 : 3 * kDraws, [&] {
            const PlanePoint p = draw_from_area(area);
            return cell_of(p.across, p.along);
        });
    }
}

TEST(OutlineArea, FollowsTheReferencePlaneAndNeedsAnArea) {
    const struct {
        std::vector<Vector3> outline;
        int32_t ref_plane;
        double area;
    } rows[] = {
        {{{0, 9, 0}, {4, 9, 0}, {0, 9, 4}}, 1, 8}, {{{0, 9, 0}, {4, 9, 0}, {0, 9, 4}}, 0, 0}, {{{1, 1, 0}}, 0, 0}};
    for (const auto& row : rows) {
        OutlineArea area;
        EXPECT_EQ(row.area > 0, build_area(area, OutlineSource({row.outline}, row.ref_plane).source));
        EXPECT_NEAR(row.area, area.total, 1e-6);
    }
}

const struct {
    const char* name;
    int32_t width, height, bytes_per_pixel;
    std::vector<int> lit;        // rows from the first, pixels from the left
    uint64_t bytes_missing = 0;  // at the end of the pixel data
} kMasks[] = {
    {"one pixel inside", 3, 3, 3, {0, 0, 0, 0, 1, 0, 0, 0, 0}},
    {"the last column goes on", 3, 2, 1, {0, 0, 1, 1, 0, 0}},
    {"the last row goes on", 2, 3, 4, {1, 0, 0, 0, 1, 0}},
    {"all", 4, 2, 4, {1, 1, 1, 1, 1, 1, 1, 1}},
    {"missing data is dark", 3, 3, 2, {0, 1, 0, 1, 1, 1, 1, 1, 1}, 11},
    {"none", 2, 1, 1, {0, 0}},
    {"no data", 2, 1, 1, {1, 1}, 2},
};

TEST(MaskArea, DrawsUniformlyFromLitPixels) {
    for (const auto& row : kMasks) {
        SCOPED_TRACE(row.name);
        std::vector<uint8_t> pixels;
        for (const int lit : row.lit) {
            pixels.push_back(lit ? 3 : 0);
            pixels.resize(pixels.size() + static_cast<size_t>(row.bytes_per_pixel) - 1, 255);  // counts for nothing
        }
        ImageReader mask{{}, pixels.data(), pixels.size() - row.bytes_missing};
        mask.source.width = row.width;
        mask.source.height = row.height;
        mask.source.bytes_per_pixel = row.bytes_per_pixel;
        set_rect(mask.source, -10, 5, -10 + 2 * static_cast<float>(row.width), 5 + 3 * static_cast<float>(row.height));
        // Candidates come from twice the rectangle: beyond the last column and row these go on.
        std::vector<double> sizes;
        for (float y = 6.5f; y < 5 + 6 * static_cast<float>(row.height); y += 3)
            for (float x = -9; x < -10 + 4 * static_cast<float>(row.width); x += 2)
                sizes.push_back(sample1(mask, x, y) > 0);
        const double lit_cells = std::accumulate(sizes.begin(), sizes.end(), 0.0);
        MaskArea area;
        ASSERT_EQ(lit_cells > 0, build_area(area, mask));
        EXPECT_EQ(lit_cells, area.total);
        if (lit_cells > 0)
            expect_uniform(sizes, 0, [&] {
                const PlanePoint p = draw_from_area(area, mask);
                return static_cast<int>((p.along - 5) / 3) * 2 * row.width + static_cast<int>((p.across + 10) / 2);
            });
    }
}

}  // namespace
}  // namespace tovu
