#include "stage/assets/shapes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "stage/assets/bridge_holes.h"

namespace stage {
namespace {

constexpr int kMaxCount = 100000;

using Shape = Result<std::vector<Mesh>>;

struct Length {
    const char* name;
    float value;
};

struct Count {
    const char* name;
    int value;
    int minimum;
};

std::optional<Error> wrong_length(const char* shape, std::initializer_list<Length> lengths) {
    for (const Length& length : lengths)
        if (!std::isfinite(length.value) || length.value <= 0)
            return Error{fmt::format("{}: {} is {}; it must be a number above 0", shape, length.name, length.value)};
    return {};
}

std::optional<Error> wrong_count(const char* shape, Count count) {
    if (count.value >= count.minimum && count.value <= kMaxCount) return {};
    return Error{fmt::format("{}: {} is {}; it must be from {} to {}", shape, count.name, count.value, count.minimum,
                             kMaxCount)};
}

Vector3 at_angle(double radius_x, double radius_y, double radians) {
    return {static_cast<float>(radius_x * std::cos(radians)), static_cast<float>(radius_y * std::sin(radians)), 0.0f};
}

Mesh ellipse(double radius_x, double radius_y, int segments) {
    Mesh mesh;
    for (int i = 0; i < segments; ++i)
        mesh.vertices.push_back(at_angle(radius_x, radius_y, 2 * std::numbers::pi * i / segments));
    return mesh;
}

Shape single(Mesh mesh) {
    std::vector<Mesh> meshes;
    meshes.push_back(std::move(mesh));
    return meshes;
}

}  // namespace

Shape make_rectangle(float width, float height) {
    if (auto error = wrong_length("rectangle", {{"width", width}, {"height", height}})) return *error;
    const float x = width / 2, y = height / 2;
    return single({{{-x, -y, 0}, {x, -y, 0}, {x, y, 0}, {-x, y, 0}}});
}

Shape make_ellipse(float width, float height, int segments) {
    if (auto error = wrong_length("ellipse", {{"width", width}, {"height", height}})) return *error;
    if (auto error = wrong_count("ellipse", {"segments", segments, 3})) return *error;
    return single(ellipse(double{width} / 2, double{height} / 2, segments));
}

Shape make_polygon(std::vector<Vector3> corners) {
    const size_t count = corners.size();
    if (count < 3 || count > static_cast<size_t>(kMaxCount))
        return Error{fmt::format("polygon: {} corners; it must have from 3 to {}", count, kMaxCount)};
    for (size_t i = 0; i < count; ++i) {
        const Vector3& c = corners[i];
        if (!std::isfinite(c.x) || !std::isfinite(c.y) || !std::isfinite(c.z))
            return Error{fmt::format("polygon: corner {} is ({}, {}, {}); its coordinates must be finite numbers", i,
                                     c.x, c.y, c.z)};
    }
    return single({std::move(corners)});
}

Shape make_star(int points, float outer_radius, float inner_radius) {
    if (auto error = wrong_count("star", {"points", points, 2})) return *error;
    if (auto error = wrong_length("star", {{"outer_radius", outer_radius}, {"inner_radius", inner_radius}}))
        return *error;
    Mesh mesh;
    for (int i = 0; i < 2 * points; ++i) {
        const double radius = i % 2 == 0 ? outer_radius : inner_radius;
        mesh.vertices.push_back(at_angle(radius, radius, std::numbers::pi * (0.5 + static_cast<double>(i) / points)));
    }
    return single(std::move(mesh));
}

Shape make_ring(float outer_radius, float inner_radius, int segments) {
    if (auto error = wrong_length("ring", {{"outer_radius", outer_radius}, {"inner_radius", inner_radius}}))
        return *error;
    if (auto error = wrong_count("ring", {"segments", segments, 3})) return *error;
    if (inner_radius >= outer_radius)
        return Error{
            fmt::format("ring: inner_radius is {}; it must be below outer_radius, {}", inner_radius, outer_radius)};
    return single(
        bridge_holes(ellipse(outer_radius, outer_radius, segments), {ellipse(inner_radius, inner_radius, segments)}));
}

Shape make_spiral(float turns, float inner_radius, float outer_radius, float thickness, int segments) {
    if (auto error =
            wrong_length("spiral", {{"turns", turns}, {"outer_radius", outer_radius}, {"thickness", thickness}}))
        return *error;
    if (auto error = wrong_count("spiral", {"segments", segments, 3})) return *error;
    if (!(inner_radius >= 0 && inner_radius < outer_radius))
        return Error{fmt::format("spiral: inner_radius is {}; it must be from 0 to below outer_radius, {}",
                                 inner_radius, outer_radius)};
    const double steps = std::ceil(double{turns} * segments);
    if (steps > kMaxCount)
        return Error{fmt::format("spiral: turns × segments is {}; it must be at most {}", steps, kMaxCount)};
    const double pitch = (double{outer_radius} - inner_radius) / turns;
    if (turns > 1 && thickness >= pitch)
        return Error{
            fmt::format("spiral: thickness is {}; it must be below the distance of two turns, {}", thickness, pitch)};
    if (inner_radius > 0 && thickness > 2 * inner_radius)
        return Error{fmt::format("spiral: thickness is {}; it must be at most twice inner_radius, {}", thickness,
                                 2 * inner_radius)};

    // Outward along the outer rim, back along the inner one.
    Mesh mesh;
    std::vector<Vector3> inner_rim;
    for (int i = 0; i <= static_cast<int>(steps); ++i) {
        const double turn = std::min(double{turns}, static_cast<double>(i) / segments);
        const double radius = inner_radius + pitch * turn, angle = 2 * std::numbers::pi * turn;
        const double outer = radius + double{thickness} / 2, inner = std::max(0.0, radius - double{thickness} / 2);
        mesh.vertices.push_back(at_angle(outer, outer, angle));
        inner_rim.push_back(at_angle(inner, inner, angle));
    }
    mesh.vertices.insert(mesh.vertices.end(), inner_rim.rbegin(), inner_rim.rend());
    return single(std::move(mesh));
}

}  // namespace stage
