#include "outline.h"

#include <tovu/host_services.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <span>

namespace gather {
namespace {

struct Matrix {
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};  // OpenGL's column order
};

Vector3 transform(const Matrix& matrix, Vector3 p) {
    const float* m = matrix.m;
    return {m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12], m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13],
            m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14]};
}

// A cut connects the hole of a letter to its outer border, and the outline passes the cut twice. Smoke must not gather
// there, so two edges of a mesh with the same ends get the length 0.
void close_cuts(std::span<Edge> edges) {
    using Point = std::array<float, 3>;
    std::map<std::pair<Point, Point>, Edge*> unpaired;  // by both ends, the lesser first
    for (Edge& edge : edges) {
        const Point from{edge.from.x, edge.from.y, edge.from.z}, to{edge.to.x, edge.to.y, edge.to.z};
        const auto [other, is_first] = unpaired.try_emplace(std::minmax(from, to), &edge);
        if (is_first) continue;
        edge.length = other->second->length = 0;
        unpaired.erase(other);
    }
}

void add_mesh(Outline& outline, const std::vector<Vector3>& corners) {
    const size_t first_edge = outline.edges.size();
    for (size_t i = 0; i < corners.size(); ++i) {
        const Vector3 a = corners[i], b = corners[(i + 1) % corners.size()];
        outline.edges.push_back({a, b, std::hypot(double{b.x} - a.x, double{b.y} - a.y, double{b.z} - a.z), 0});
    }
    // Not for a mesh of two vertices, whose two edges also have the same ends.
    if (corners.size() > 2) close_cuts(std::span(outline.edges).subspan(first_edge));
}

// Removes edges without a length and measures the outline.
void measure(Outline& outline) {
    std::erase_if(outline.edges, [](const Edge& e) { return !(e.length > 0); });
    for (Edge& edge : outline.edges) {
        edge.start = outline.length;
        outline.length += edge.length;
        outline.low_x = std::min(outline.low_x, edge.from.x);  // outlines are closed, so one end of each edge is enough
        outline.high_x = std::max(outline.high_x, edge.from.x);
    }
}

}  // namespace

Outline read_outline(int32_t container_handle, int32_t geometry_handle, int32_t smoke_handle) {
    Outline outline;
    if (geometry_handle == -1) return outline;
    int32_t detail = 0, access = 0, vertex_count = 0, mesh_count = 0, mesh = 0, vertex = 0;
    uint8_t flags[3] = {};
    _api__get_geom_detail(geometry_handle, &detail);
    _api__get_geom_geomod(geometry_handle, 2, detail, &access);
    if (access == 0) return outline;
    _api__geomod_init(access);
    _api__geomod_get_info(access, &vertex_count, &mesh_count, &flags[0], &flags[1], &flags[2]);
    if (mesh_count < 1) return outline;

    Matrix to_world, to_smoke;
    _api__container_get_transformation_matrix(container_handle, to_world.m);
    if (smoke_handle != -1) _api__container_get_inverse_matrix(smoke_handle, to_smoke.m);
    _api__geomod_goto_mesh(access, 0, &mesh);
    for (int32_t i = 0; i < mesh_count; ++i, _api__geomod_next_mesh(access, &mesh)) {
        std::vector<Vector3> corners;
        _api__geomod_get_num_mesh_verices(access, mesh, &vertex_count);
        _api__geomod_goto_vertex(access, mesh, 0, &vertex);
        for (int32_t j = 0; j < vertex_count; ++j, _api__geomod_next_vertex(access, mesh, &vertex)) {
            Vector3 corner{};
            _api__geomod_get_vertex(access, vertex, &corner.x, &corner.y, &corner.z);
            corner = transform(to_smoke, transform(to_world, corner));
            if (std::isfinite(corner.x + corner.y + corner.z)) corners.push_back(corner);
        }
        add_mesh(outline, corners);
    }
    measure(outline);
    return outline;
}

std::optional<Place> place_of(const Outline& outline, int32_t number) {
    if (outline.edges.empty()) return std::nullopt;
    // The fractional parts of multiples of the golden ratio are evenly spread for any count: each new one falls into
    // one of the widest gaps (Knuth, The Art of Computer Programming 3, 6.4).
    constexpr double kGoldenRatio = 0.6180339887498949;
    const double along = std::fmod(number * kGoldenRatio, 1.0) * outline.length;
    const auto next = std::upper_bound(outline.edges.begin(), outline.edges.end(), along,
                                       [](double x, const Edge& e) { return x < e.start; });
    const auto& [a, b, length, start] = *std::prev(next);
    const float t = static_cast<float>((along - start) / length);
    const Vector3 point{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
    const float width = outline.high_x - outline.low_x;
    return Place{point, width > 0 ? (point.x - outline.low_x) / width : 0};
}

}  // namespace gather
