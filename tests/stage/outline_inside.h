// Tests whether outlines enclose points, for tests of code that makes outlines.
#pragma once

#include <algorithm>
#include <vector>

#include "stage/scene/mesh.h"

namespace stage_test {

/// The even-odd rule in the x-y plane, as plug-ins apply it to one mesh.
inline bool encloses(const stage::Mesh& mesh, double x, double y) {
    bool inside = false;
    const auto& v = mesh.vertices;
    for (size_t i = 0, j = v.size() - 1; i < v.size(); j = i++) {
        const bool spans = (v[i].y <= y && y < v[j].y) || (v[j].y <= y && y < v[i].y);
        const double run = double{v[j].x} - v[i].x, rise = double{v[j].y} - v[i].y;
        if (spans && x < run * (y - v[i].y) / rise + v[i].x) inside = !inside;
    }
    return inside;
}

/// True if any of the meshes encloses the point.
inline bool any_encloses(const std::vector<stage::Mesh>& meshes, double x, double y) {
    return std::any_of(meshes.begin(), meshes.end(), [&](auto& mesh) { return encloses(mesh, x, y); });
}

struct Box {
    double min_x = 1e30, min_y = 1e30, max_x = -1e30, max_y = -1e30;
};

inline Box box_of(const std::vector<stage::Mesh>& meshes) {
    Box box;
    for (const auto& mesh : meshes)
        for (const auto& v : mesh.vertices)
            box = {std::min<double>(box.min_x, v.x), std::min<double>(box.min_y, v.y), std::max<double>(box.max_x, v.x),
                   std::max<double>(box.max_y, v.y)};
    return box;
}

/// Twice the signed area.
inline double twice_area(const stage::Mesh& mesh) {
    double sum = 0;
    const auto& v = mesh.vertices;
    for (size_t i = 0, j = v.size() - 1; i < v.size(); j = i++)
        sum += double{v[j].x} * v[i].y - double{v[i].x} * v[j].y;
    return sum;
}

}  // namespace stage_test
