#include "contours.h"

#include <algorithm>
#include <cmath>
#include <polyclipping/clipper.hpp>
#include <tuple>

#include "bridge_holes.h"

namespace stage {
namespace {

constexpr int kMaxChords = 1000;
constexpr int kGridBits = 29;  // of the largest coordinate; below 2^30 the clipping needs no 128-bit products

ContourPoint between(ContourPoint a, ContourPoint b, double t) {
    return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
}

double second_difference(ContourPoint a, ContourPoint b, ContourPoint c) {
    return std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y);
}

// How many chords of equal parameter width stay within tolerance. second_derivative: an upper bound of its length.
int chords_for(double second_derivative, double tolerance) {
    const double chords = std::ceil(std::sqrt(second_derivative / (8 * tolerance)));
    return chords >= 1 ? static_cast<int>(std::min<double>(chords, kMaxChords)) : 1;
}

// The power of two that scales the largest coordinate to just below 2^kGridBits. A power of two scales exactly.
double grid_scale(const std::vector<Contour>& contours) {
    double largest = 0;
    for (const Contour& contour : contours)
        for (const ContourPoint& p : contour) largest = std::max({largest, std::abs(p.x), std::abs(p.y)});
    int exponent = 0;
    std::frexp(largest, &exponent);
    return std::ldexp(1.0, kGridBits - std::max(exponent, -900));
}

bool all_finite(const std::vector<Contour>& contours) {
    return std::all_of(contours.begin(), contours.end(), [](const Contour& contour) {
        return std::all_of(contour.begin(), contour.end(),
                           [](const ContourPoint& p) { return std::isfinite(p.x) && std::isfinite(p.y); });
    });
}

ClipperLib::Path on_grid(const Contour& contour, double scale) {
    ClipperLib::Path path;
    path.reserve(contour.size());
    for (const ContourPoint& p : contour) path.emplace_back(std::llround(p.x * scale), std::llround(p.y * scale));
    return path;
}

Mesh off_grid(const ClipperLib::Path& path, double scale) {
    Mesh mesh;
    mesh.vertices.reserve(path.size());
    for (const ClipperLib::IntPoint& p : path)
        mesh.vertices.push_back({static_cast<float>(static_cast<double>(p.X) / scale),
                                 static_cast<float>(static_cast<double>(p.Y) / scale), 0.0f});
    return mesh;
}

std::tuple<float, float> left_and_lower_edge(const Mesh& mesh) {
    Vector3 corner = mesh.vertices.front();
    for (const Vector3& v : mesh.vertices) corner = {std::min(corner.x, v.x), std::min(corner.y, v.y), 0.0f};
    return {corner.x, corner.y};
}

}  // namespace

void append_quadratic(Contour& contour, ContourPoint control, ContourPoint end, double tolerance) {
    const ContourPoint start = contour.back();
    const int chords = chords_for(2 * second_difference(start, control, end), tolerance);
    for (int i = 1; i < chords; ++i) {
        const double t = static_cast<double>(i) / chords;
        contour.push_back(between(between(start, control, t), between(control, end, t), t));
    }
    contour.push_back(end);
}

void append_cubic(Contour& contour, ContourPoint control_1, ContourPoint control_2, ContourPoint end,
                  double tolerance) {
    const ContourPoint start = contour.back();
    const double bend =
        std::max(second_difference(start, control_1, control_2), second_difference(control_1, control_2, end));
    const int chords = chords_for(6 * bend, tolerance);
    for (int i = 1; i < chords; ++i) {
        const double t = static_cast<double>(i) / chords;
        const ContourPoint middle = between(control_1, control_2, t);
        contour.push_back(between(between(between(start, control_1, t), middle, t),
                                  between(middle, between(control_2, end, t), t), t));
    }
    contour.push_back(end);
}

std::vector<Mesh> outlines_of(const std::vector<Contour>& contours, FillRule rule) {
    if (!all_finite(contours)) return {};
    const double scale = grid_scale(contours);
    ClipperLib::Clipper clipper;
    for (const Contour& contour : contours) clipper.AddPath(on_grid(contour, scale), ClipperLib::ptSubject, true);
    ClipperLib::PolyTree parts;
    const auto fill = rule == FillRule::kEvenOdd ? ClipperLib::pftEvenOdd : ClipperLib::pftNonZero;
    if (!clipper.Execute(ClipperLib::ctUnion, parts, fill, fill)) return {};

    std::vector<Mesh> outlines;
    // GetNext visits every node of the tree, parts that lie inside holes included.
    for (const ClipperLib::PolyNode* node = parts.GetFirst(); node; node = node->GetNext()) {
        if (node->IsHole()) continue;
        std::vector<Mesh> holes;
        for (const ClipperLib::PolyNode* hole : node->Childs) holes.push_back(off_grid(hole->Contour, scale));
        Mesh outline = bridge_holes(off_grid(node->Contour, scale), holes);
        if (!outline.vertices.empty()) outlines.push_back(std::move(outline));
    }
    std::stable_sort(outlines.begin(), outlines.end(),
                     [](const Mesh& a, const Mesh& b) { return left_and_lower_edge(a) < left_and_lower_edge(b); });
    return outlines;
}

}  // namespace stage
