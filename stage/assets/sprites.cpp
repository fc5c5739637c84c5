#include "sprites.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "stage/names.h"

namespace stage {
namespace {

// Only +, -, ×, / and square roots: IEEE 754 defines their rounding. The rounding of sine depends on the library.

/// A point of the sprite: -1…1 across, +y up.
struct Spot {
    double x;
    double y;
};

/// Luminance and alpha of a spot, each 0…1.
struct Shade {
    double luminance;
    double alpha;
};

double radius(Spot p) {
    return std::sqrt(p.x * p.x + p.y * p.y);
}

/// 0 up to `from`, 1 from `to` on (either may be the larger), 3t² - 2t³ between.
double smooth_step(double from, double to, double value) {
    const double t = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

/// Falls to 0 at the sprite's border, so that the edges of quads are invisible.
double border_window(double r) {
    return smooth_step(0.98, 0.72, r);
}

uint32_t hash(int32_t x, int32_t y, uint32_t seed) {
    uint32_t h = static_cast<uint32_t>(x) * 0x8da6b343u ^ static_cast<uint32_t>(y) * 0xd8163841u ^ seed * 0xcb1ab31fu;
    h = (h ^ (h >> 16)) * 0x7feb352du;
    h = (h ^ (h >> 15)) * 0x846ca68bu;
    return h ^ (h >> 16);
}

/// Dot product of the lattice point's gradient (one of eight directions) and the offset from that point.
double slope(int32_t x, int32_t y, uint32_t seed, double dx, double dy) {
    constexpr double kHalfRoot = 0.70710678118654752;
    constexpr double kDirections[8][2] = {{1, 0}, {-1, 0}, {kHalfRoot, kHalfRoot},  {-kHalfRoot, kHalfRoot},
                                          {0, 1}, {0, -1}, {kHalfRoot, -kHalfRoot}, {-kHalfRoot, -kHalfRoot}};
    const auto& direction = kDirections[hash(x, y, seed) & 7];
    return direction[0] * dx + direction[1] * dy;
}

/// Gradient noise, about -0.7…0.7, 0 at whole numbers (Perlin, "Improving noise", SIGGRAPH 2002).
double noise(Spot p, uint32_t seed) {
    const double floor_x = std::floor(p.x);
    const double floor_y = std::floor(p.y);
    const auto x = static_cast<int32_t>(floor_x);
    const auto y = static_cast<int32_t>(floor_y);
    const double dx = p.x - floor_x;
    const double dy = p.y - floor_y;
    const auto fade = [](double t) { return t * t * t * (t * (t * 6.0 - 15.0) + 10.0); };
    const double u = fade(dx);
    const double v = fade(dy);
    const double low = slope(x, y, seed, dx, dy) * (1.0 - u) + slope(x + 1, y, seed, dx - 1.0, dy) * u;
    const double high =
        slope(x, y + 1, seed, dx, dy - 1.0) * (1.0 - u) + slope(x + 1, y + 1, seed, dx - 1.0, dy - 1.0) * u;
    return low * (1.0 - v) + high * v;
}

/// Octaves of noise, each twice as fine and `gain` as strong as the one before. About -1…1.
double fractal_noise(Spot p, uint32_t seed, int octaves, double gain) {
    double sum = 0.0;
    double strength = 1.0;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += strength * noise(p, seed + static_cast<uint32_t>(octave));
        strength *= gain;
        p = {p.x * 2.0 + 17.3, p.y * 2.0 + 5.7};
    }
    return sum;
}

/// The point displaced by noise, which gives shapes curled edges.
Spot curled(Spot p, double frequency, double amount, uint32_t seed) {
    const Spot at = {p.x * frequency, p.y * frequency};
    return {p.x + amount * fractal_noise(at, seed, 3, 0.5),
            p.y + amount * fractal_noise({at.x + 31.7, at.y + 11.3}, seed + 50, 3, 0.5)};
}

Shade puff(Spot p) {
    const Spot q = curled(p, 1.7, 0.24, 113);
    const double body = smooth_step(0.92, 0.05, radius(q));
    const double detail = fractal_noise({q.x * 2.6, q.y * 2.6}, 100, 5, 0.55);
    const double alpha = body * (0.74 + 0.55 * detail) * border_window(radius(p));
    return {1.0, std::clamp(alpha, 0.0, 1.0)};
}

Shade soft(Spot p) {
    const double r = std::min(radius(p), 1.0);
    const double inside = 1.0 - r * r;
    return {1.0, inside * inside * inside};  // close to a bell curve, exactly 0 at the border
}

Shade wisp(Spot p) {
    const Spot q = curled(p, 1.0, 0.22, 319);
    // Strands follow the zero lines of stretched noise and fade to both sides.
    const double fold = 3.6 * fractal_noise({q.x * 2.7, q.y * 0.9}, 193, 3, 0.5);
    const double strand = 1.0 / (1.0 + fold * fold);
    const double body = smooth_step(0.92, 0.05, radius({q.x * 1.15, q.y}));
    return {1.0, std::clamp(body * (0.08 + 0.82 * strand) * border_window(radius(p)), 0.0, 1.0)};
}

Shade ring(Spot p) {
    const Spot q = curled(p, 1.6, 0.12, 5);
    const double across = (radius(q) - 0.58) / 0.30;
    const double tube = std::max(0.0, 1.0 - across * across);
    const double detail = fractal_noise({q.x * 3.1, q.y * 3.1}, 91, 4, 0.5);
    return {1.0, std::clamp(tube * tube * (0.75 + 0.7 * detail) * border_window(radius(p)), 0.0, 1.0)};
}

/// Thickness of the billow. The absolute value of noise gives rounded heads of several sizes; its zeros are the
/// creases.
double billow_height(Spot p) {
    const Spot q = curled(p, 1.2, 0.10, 131);
    double heads = 0.0;
    double strength = 0.60;
    for (uint32_t octave = 0; octave < 3; ++octave, strength *= 0.45) {
        const double scale = 1.6 * static_cast<double>(1u << octave);
        heads += strength * (1.9 * std::abs(noise({q.x * scale + 3.4, q.y * scale + 7.9}, 151 + octave)) - 0.45);
    }
    return smooth_step(1.0, 0.0, radius(q)) * (0.95 + 0.9 * heads);
}

Shade billow(Spot p) {
    const double height = billow_height(p);
    // Lit from above: brighter where the height decreases upwards.
    const double fall = billow_height({p.x, p.y - 0.04}) - billow_height({p.x, p.y + 0.04});
    const double luminance = std::clamp(0.82 + 0.75 * fall, 0.5, 1.0);
    return {luminance, smooth_step(0.05, 0.85, height) * 0.95 * border_window(radius(p))};
}

Shade spark(Spot p) {
    const double r = std::min(radius(p), 1.0);
    const double glow = (1.0 - r) * (1.0 - r);
    return {1.0, std::clamp(smooth_step(0.22, 0.05, r) + 0.55 * glow * glow, 0.0, 1.0)};
}

struct Drawing {
    const char* name;
    Shade (*shade)(Spot);
};

constexpr Drawing kDrawings[] = {
    {"puff", puff},      // a cloud with a ragged, curling edge: most smoke
    {"soft", soft},      // a smooth disc without structure: haze, fog, breath
    {"wisp", wisp},      // thin strands: a dying fire, incense, steam
    {"billow", billow},  // dense heads lit from above: thick smoke, dust, ash clouds
    {"ring", ring},      // a ring of smoke
    {"spark", spark},    // a bright point with a glow: embers, with additive blending
};

uint8_t to_byte(double value) {
    return static_cast<uint8_t>(std::lround(value * 255.0));
}

}  // namespace

std::vector<std::string> sprite_names() {
    std::vector<std::string> names;
    for (const Drawing& drawing : kDrawings) names.emplace_back(drawing.name);
    return names;
}

Result<Picture> make_sprite(const std::string& name, int32_t size) {
    const auto* drawing = std::ranges::find(kDrawings, name, &Drawing::name);
    if (drawing == std::end(kDrawings))
        return Error{fmt::format("unknown sprite '{}': {}", name, name_hint(name, sprite_names()))};

    Picture picture{size, size, kPictureLuminanceAlpha, {}};
    picture.bytes.reserve(picture_byte_count(size, size, picture.format));
    for (int32_t row = 0; row < size; ++row) {
        for (int32_t column = 0; column < size; ++column) {
            // -1…1 from the centre of the first pixel to the centre of the last one.
            const Spot p = {2.0 * column / (size - 1) - 1.0, 2.0 * row / (size - 1) - 1.0};
            const Shade shade = drawing->shade(p);
            picture.bytes.push_back(to_byte(shade.luminance));
            picture.bytes.push_back(to_byte(shade.alpha));
        }
    }
    return picture;
}

}  // namespace stage
