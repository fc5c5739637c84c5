// Colour and opacity over life: the spline, the two tables and their indices.
#include "particles/curves.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "particles/spline.h"
#include "smoke_instance.h"

namespace {

using tovu::AkimaSpline;
using tovu::SmokeInstance;

constexpr float kInfinite = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// An instance whose two curve texts can be set: their slots hold addresses of 32 bits.
class CurveInstance {
  public:
    CurveInstance() {
        void* page = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | kBelow4Gib, -1, 0);
        EXPECT_NE(MAP_FAILED, page);
        text_ = static_cast<char*>(page);
    }
    ~CurveInstance() { munmap(text_, kBytes); }
    const tovu::ColorTable& color(const std::string& text) {
        instance_.parameters.color = store(text);
        build_color_table(instance_);
        return instance_.color_table;
    }
    const float* alpha(const std::string& text) {
        instance_.parameters.alpha_curve = store(text);
        build_alpha_table(instance_);
        return instance_.alpha_table.alpha;
    }

  private:
#ifdef MAP_32BIT
    static constexpr int kBelow4Gib = MAP_32BIT;
#else
    static constexpr int kBelow4Gib = 0;
#endif
    static constexpr size_t kBytes = 65536;
    uint32_t store(const std::string& text) {
        std::memcpy(text_, text.c_str(), text.size() + 1);
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(text_));
    }
    char* text_;
    SmokeInstance instance_;
};

std::unique_ptr<AkimaSpline> spline_through(const std::vector<float>& x, const std::vector<float>& y) {
    auto spline = std::make_unique<AkimaSpline>();
    build_spline(*spline, static_cast<int32_t>(x.size()), x.data(), y.data());
    return spline;
}

TEST(Spline, DerivativesWeighNeighbouringSlopes) {
    const std::vector<float> x = {0, 1, 3, 4, 6, 7, 9};
    const std::vector<float> y = {0, 2, 1, 5, 5, 5, 2};
    const auto spline = spline_through(x, y);
    ASSERT_EQ(tovu::kSplineOk, spline->error);
    // Slopes, two more beyond either end by going on evenly: m[k] is slope[k + 2].
    std::vector<double> slope(2);
    for (size_t k = 0; k + 1 < x.size(); ++k)
        slope.push_back((static_cast<double>(y[k + 1]) - static_cast<double>(y[k])) /
                        static_cast<double>(x[k + 1] - x[k]));
    slope[1] = 2 * slope[2] - slope[3];
    slope[0] = 2 * slope[1] - slope[2];
    slope.push_back(2 * slope[7] - slope[6]);
    slope.push_back(2 * slope[8] - slope[7]);
    for (size_t k = 0; k < x.size(); ++k) {
        SCOPED_TRACE(k);
        const double right = std::fabs(slope[k + 3] - slope[k + 2]);
        const double left = std::fabs(slope[k + 1] - slope[k]);
        const double derivative = right + left > 0 ? (right * slope[k + 1] + left * slope[k + 2]) / (right + left)
                                                   : (slope[k + 1] + slope[k + 2]) / 2;
        const auto at = static_cast<double>(x[k]);
        constexpr double h = 1e-6;
        EXPECT_NEAR(static_cast<double>(y[k]), spline_value(*spline, at), 1e-12);
        EXPECT_NEAR(derivative, (spline_value(*spline, at) - spline_value(*spline, at - h)) / h, 1e-4)
            << "from the left";
        EXPECT_NEAR(derivative, (spline_value(*spline, at + h) - spline_value(*spline, at)) / h, 1e-4)
            << "to the right";
    }
}

TEST(Spline, ValuesDoNotDependOnTheOneBefore) {
    const std::vector<float> x = {0, 0.1f, 0.5f, 0.75f, 1};
    const auto five = spline_through(x, {0, 1, 0.5f, 0.25f, 1});
    const auto two = spline_through({0, 1}, {1, 0});
    std::vector<double> rising;
    for (int i = -20; i <= 120; ++i) rising.push_back(spline_value(*five, i / 100.0));
    for (int i = 120; i >= -20; --i) {
        const int far = i % 2 ? 100 : 0;  // another interval, of another spline, in between
        spline_value(*two, far / 100.0);
        spline_value(*five, far / 100.0);
        EXPECT_NEAR(rising[static_cast<size_t>(i + 20)], spline_value(*five, i / 100.0), 1e-12) << i;
    }
}

TEST(Spline, SaysWhatIsWrong) {
    EXPECT_EQ(tovu::kSplineTooFewPoints, spline_through({}, {})->error);
    EXPECT_EQ(tovu::kSplineTooFewPoints, spline_through({0}, {1})->error);
    EXPECT_EQ(tovu::kSplineNotIncreasing, spline_through({0, 0.5f, 0.5f}, {0, 1, 2})->error);
    EXPECT_EQ(tovu::kSplineNotIncreasing, spline_through({0, kNan, 1}, {0, 1, 2})->error);
    EXPECT_EQ(tovu::kSplineOk, spline_through({0, 1}, {0, 1})->error);
}

struct AlphaCase {
    const char* name;
    std::string text;
    double (*at)(double u);  // before it is held to 0 to 1
};

std::string line_of(int points) {
    std::string text;
    for (int i = 0; i < points; ++i) text += std::to_string(i / 1000.0) + " " + std::to_string(i / 1000.0) + " ";
    return text;
}

const AlphaCase kAlphas[] = {
    {"as registered: with two points the second slope counts as 0", "0.0 1.0 1.0 0.0",
     [](double u) { return 1 - 1.5 * u + 0.5 * u * u; }},
    {"uneven points on a line", "0 0.9 0.1 0.84 0.7 0.48 1 0.3", [](double u) { return 0.9 - 0.6 * u; }},
    {"held to 0 and 1", "-1 -2 0 -1 0.5 0.5 1 2", [](double u) { return -1 + 3 * u; }},
    {"the ends go on", "0.4 0.4 0.5 0.5 0.6 0.6", [](double u) { return u; }},
    {"a last x alone is ignored", "0 0.9 0.5 0.6 1 0.3 2", [](double u) { return 0.9 - 0.6 * u; }},
    {"points past the thousandth are ignored", line_of(1000) + "5 0 6 1 7 0", [](double u) { return u; }},
    {"x falls", "0 1 0.5 1 0.4 1", [](double) { return 0.0; }},
    {"x stays", "0 1 0 1", [](double) { return 0.0; }},
    {"one point", "0 1", [](double) { return 0.0; }},
    {"no text", "", [](double) { return 0.0; }},
};

TEST(AlphaTable, SamplesTheCurve) {
    CurveInstance instance;
    for (const AlphaCase& row : kAlphas) {
        SCOPED_TRACE(row.name);
        const float* alpha = instance.alpha(row.text);
        for (int i = 0; i < 512; ++i)
            EXPECT_NEAR(std::min(1.0, std::max(0.0, row.at(i / 511.0))), static_cast<double>(alpha[i]), 2e-6) << i;
        EXPECT_EQ(0.0f, alpha[512]) << "the entry of a life that is over";
    }
}

TEST(AlphaTable, KnownEntries) {
    CurveInstance instance;
    EXPECT_EQ(1.0f, instance.alpha("0.0 1.0 1.0 0.0")[0]);
    EXPECT_NEAR(0.374022, static_cast<double>(instance.alpha("0.0 1.0 1.0 0.0")[256]), 5e-7);
    EXPECT_EQ(0.0f, instance.alpha("0.0 1.0 1.0 0.0")[511]);
    EXPECT_NEAR(0.750978, static_cast<double>(instance.alpha("0 0 0.5 1 1 0")[128]), 5e-7);
}

struct ColorCase {
    const char* name;
    const char* text;
    int entry;
    int rgb[3];
};
const ColorCase kColors[] = {
    {"as registered: white", "0.0 1.0 1.0 1.0 1.0 1.0 1.0 1.0", 0, {255, 255, 255}},
    {"as registered: to the end", "0.0 1.0 1.0 1.0 1.0 1.0 1.0 1.0", 1023, {255, 255, 255}},
    {"as registered: the end itself is black", "0.0 1.0 1.0 1.0 1.0 1.0 1.0 1.0", 1024, {0, 0, 0}},
    {"a quarter of the way, truncated", "0 0 1 0.5 1 1 0 0.25", 256, {63, 191, 111}},
    {"a segment begins with its own colour", "0 1 0 0 0.5 0 1 0 1 0 0 1", 512, {0, 255, 0}},
    {"and ends one step short of the next", "0 1 0 0 0.5 0 1 0 1 0 0 1", 511, {0, 254, 0}},
    {"black before the first stop", "0.5 1 1 1 1 1 1 1", 511, {0, 0, 0}},
    {"from the first stop", "0.5 1 1 1 1 1 1 1", 512, {255, 255, 255}},
    {"black from the last stop on", "0 1 1 1 0.5 1 1 1", 512, {0, 0, 0}},
    {"stops in one entry fill nothing", "0 1 1 1 0.5 1 1 1 0.5004 0 0 1 1 0 0 1", 512, {0, 0, 255}},
    {"a stop behind its neighbour fills nothing", "0.8 1 1 1 0.2 1 1 1 0.4 1 1 1", 600, {0, 0, 0}},
    {"one stop is black", "0 1 1 1", 0, {0, 0, 0}},
    {"a group cut short is ignored", "0 1 1 1 0.5 1 1 1 1 1 1", 600, {0, 0, 0}},
    {"positions and components are held to 0 and 1", "-3 7 -2 1 9 7 -2 1", 1023, {255, 0, 255}},
    {"also -1, which is no mark of its own", "-1 1 1 1 1 1 1 1", 0, {255, 255, 255}},
    {"no number counts as 0", "0 nan inf 1 1 x y 1", 500, {0, 0, 255}},
};

TEST(ColorTable, SegmentsBetweenStops) {
    CurveInstance instance;
    for (const ColorCase& row : kColors) {
        SCOPED_TRACE(row.name);
        const uint8_t* rgb = instance.color(row.text).rgb[row.entry];
        for (int i = 0; i < 3; ++i) EXPECT_EQ(row.rgb[i], rgb[i]) << i;
    }
}

struct IndexCase {
    float age, life;
    int color, alpha;
};
const IndexCase kIndices[] = {
    {0, 3, 0, 0},
    {1.5f, 3, 512, 256},
    {2.9999f, 3, 1023, 511},
    {3, 3, 1024, 512},
    {0, 0, 1024, 512},
    {1, 0, 1024, 512},
    {5, 3, 1024, 512},
    {-1, 3, 0, 0},
    {1, -3, 0, 0},
    {kNan, 3, 1024, 512},
    {3, kNan, 1024, 512},
    {kInfinite, 3, 1024, 512},
    {3, kInfinite, 0, 0},
    {-kInfinite, 3, 0, 0},
    {3e38f, 3e38f, 1024, 512},
    {1e-45f, 3, 0, 0},
    {kInfinite, kInfinite, 1024, 512},
};

TEST(CurveIndices, StayWithinTheTables) {
    for (const IndexCase& row : kIndices) {
        const int32_t k = tovu::color_index(row.age, row.life);
        EXPECT_EQ(row.color, k) << row.age << " of " << row.life;
        EXPECT_EQ(row.alpha, tovu::alpha_index(k)) << row.age << " of " << row.life;
    }
    for (int i = 0; i < 30000; ++i) {
        const auto age = static_cast<float>(i) * 1e-4f;
        EXPECT_EQ(static_cast<int32_t>(age * 512 / 3.0f), tovu::alpha_index(tovu::color_index(age, 3))) << age;
    }
}

}  // namespace
