#include "look_framing.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <vector>

#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_run.h"

namespace tovu {

namespace {

using stage::Error;
using stage::Result;

constexpr int32_t kWidth = 160, kHeight = 90;  // of the measured pictures, pixels
constexpr int kLongest = 12;                   // longest pre-warming, seconds
constexpr int kSettled = 3;                    // seconds without growth that end the measurement
constexpr double kGrowth = 1.05;               // smallest factor that counts as growth
constexpr double kLeastContrast = 0.02;        // smallest contrast that counts as smoke, 0 to 1
constexpr double kFaintShare = 0.02;           // share of the smoke on each side that the framing ignores
constexpr double kCutShare = 0.002;            // share of the smoke in an edge row that means that the smoke is cut off
constexpr double kFilledShare = 2.0 / 3.0;     // share of the picture that the smoke fills
constexpr int kMostTries = 10;                 // to find a distance that shows all smoke

// A camera that looks along -Z: its x and y, and its distance from the plane z = 0.
struct View {
    std::array<double, 2> place = {0, 0};
    double distance = 300;
};

// The smoke in one picture, measured in the plane z = 0.
struct Sight {
    double amount = 0;                    // contrast × square world units
    double share = 0;                     // of the picture's width or height that the smoke fills, the greater one
    bool is_cut = false;                  // the smoke reaches an edge of the picture
    std::array<double, 2> low{}, high{};  // world units
};

// The height of the picture in world units, at `distance` from a camera with the default field of view.
double seen_height(double distance) {
    return 2 * distance * std::tan(stage::CameraDescription().field_of_view * std::numbers::pi / 360);
}

// The ends of the smoke along an axis, 0 to 1. sums: contrast of the rows or columns, not all 0.
std::array<double, 2> ends_of(const std::vector<double>& sums) {
    const double faint = kFaintShare * std::accumulate(sums.begin(), sums.end(), 0.0);
    size_t first = 0, end = sums.size();
    for (double outside = sums[first]; outside < faint; outside += sums[first]) ++first;
    for (double outside = sums[end - 1]; outside < faint; outside += sums[end - 1]) --end;
    const auto count = static_cast<double>(sums.size());
    return {static_cast<double>(first) / count, static_cast<double>(end) / count};
}

// The difference of a pixel from the background, 0 to 1. Invisible differences count as 0.
double contrast(const uint8_t* pixel, const stage::Triple& background) {
    double most = 0;
    for (size_t i = 0; i < 3; ++i) most = std::max(most, std::abs(pixel[i] / 255.0 - background[i]));
    return most < kLeastContrast ? 0 : most;
}

Sight sight_of(const stage::Picture& picture, const stage::Triple& background, const View& view) {
    std::vector<double> columns(kWidth), rows(kHeight);
    for (size_t y = 0; y < rows.size(); ++y)
        for (size_t x = 0; x < columns.size(); ++x) {
            const double seen = contrast(&picture.bytes[(y * columns.size() + x) * 4], background);
            columns[x] += seen;
            rows[y] += seen;
        }
    const double total = std::accumulate(rows.begin(), rows.end(), 0.0);
    if (total <= 0) return {};
    const double at_edges = std::max({columns.front(), columns.back(), rows.front(), rows.back()});
    const std::array<std::array<double, 2>, 2> ends = {ends_of(columns), ends_of(rows)};
    const double height = seen_height(view.distance), unit = height / kHeight;
    const std::array<double, 2> sides = {height * kWidth / kHeight, height};
    Sight sight{total * unit * unit, 0, at_edges > kCutShare * total, {}, {}};
    for (size_t axis = 0; axis < 2; ++axis) {
        const auto& [low, high] = ends[axis];
        sight.share = std::max(sight.share, high - low);
        sight.low[axis] = view.place[axis] + (low - 0.5) * sides[axis];
        sight.high[axis] = view.place[axis] + (high - 0.5) * sides[axis];
    }
    return sight;
}

// Moves the view until it shows all smoke at about its final size. view: starts with the view of the previous second.
Result<Sight> find_sight(stage::BuiltScene& built, stage::SceneCanvas& canvas, View& view) {
    Sight sight;
    for (int i = 0; i < kMostTries; ++i) {
        built.stage->camera.position = {static_cast<float>(view.place[0]), static_cast<float>(view.place[1]),
                                        static_cast<float>(view.distance)};
        const Result<stage::Picture> picture = stage::draw_scene(canvas, built);
        if (!picture) return picture.error();
        sight = sight_of(*picture, *built.description.background, view);
        if (sight.amount == 0 || (!sight.is_cut && sight.share > 0.45 && sight.share < 0.85)) break;
        for (size_t axis = 0; axis < 2; ++axis) view.place[axis] = (sight.low[axis] + sight.high[axis]) / 2;
        view.distance *= sight.is_cut ? 2.0 : sight.share / kFilledShare;
    }
    return sight;
}

// Measures the smoke once each second until it stops growing.
Result<std::vector<Sight>> watch(const stage::SceneDescription& scene, const std::string& smoke_plugin) {
    Result<stage::BuiltScene> built = stage::build_scene(scene, smoke_plugin);
    if (!built) return built.error();
    Result<stage::SceneCanvas> canvas = stage::make_canvas(scene);
    if (!canvas) return canvas.error();
    stage::SceneRun run = stage::start_run(std::move(*built));
    std::vector<Sight> sights;
    View view;
    double most = 0;
    for (int second = 1, grown = 0; second <= kLongest && (most == 0 || second - grown <= kSettled); ++second) {
        const auto frame = static_cast<int64_t>(std::round(second * scene.frame_rate));
        if (const auto done = stage::run_until(run, frame); !done) return done.error();
        const Result<Sight> sight = find_sight(run.built, *canvas, view);
        if (!sight) return sight.error();
        sights.push_back(*sight);
        if (sight->amount <= kGrowth * most) continue;
        most = sight->amount;
        grown = second;
    }
    return sights;
}

// Rounds to three digits, so that the numbers in the scene's text are short.
float rounded(double value, double scale) {
    const double step = std::pow(10.0, std::floor(std::log10(scale)) - 2);
    return static_cast<float>(std::round(value / step) * step + 0.0);  // not -0
}

}  // namespace

Result<Framing> measure_framing(const stage::SceneDescription& scene, const std::string& smoke_plugin) {
    stage::SceneDescription measured = scene;
    measured.size = {kWidth, kHeight};
    measured.prewarm = 0;
    if (!measured.background) measured.background = stage::Triple{0, 0, 0};
    measured.camera = {};
    const Result<std::vector<Sight>> sights = watch(measured, smoke_plugin);
    if (!sights) return sights.error();
    double most = 0;
    for (const Sight& sight : *sights) most = std::max(most, sight.amount);
    if (most == 0) return Error{"nothing shows in the first seconds"};
    const auto gathered =
        std::find_if(sights->begin(), sights->end(), [&](const Sight& sight) { return sight.amount >= 0.9 * most; });
    std::array<double, 2> low = gathered->low, high = gathered->high;
    for (const Sight& sight : *sights)
        for (size_t axis = 0; axis < 2 && sight.amount >= 0.5 * most; ++axis) {
            low[axis] = std::min(low[axis], sight.low[axis]);
            high[axis] = std::max(high[axis], sight.high[axis]);
        }
    const double height = std::max(high[1] - low[1], (high[0] - low[0]) * kHeight / kWidth) / kFilledShare;
    const double distance = height / seen_height(1);
    return Framing{{rounded((low[0] + high[0]) / 2, distance), rounded((low[1] + high[1]) / 2, distance),
                    rounded(distance, distance)},
                   static_cast<double>(gathered - sights->begin() + 1)};
}

}  // namespace tovu
