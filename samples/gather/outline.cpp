#include "outline.h"

#include <tovu/host_services.h>

#include <algorithm>
#include <array>
#include <cmath>
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

// Compares edges regardless of their direction.
bool is_before(const Edge* a, const Edge* b) {
    const auto ends = [](const Edge& e) {
        return std::minmax({std::array{e.from.x, e.from.y, e.from.z}, std::array{e.to.x, e.to.y, e.to.z}});
    };
    return ends(*a) < ends(*b);
}

// A cut joins the hole of a letter to its outer border, and the outline runs along the cut twice. No smoke belongs
// there: two edges of one mesh with the same ends get the length 0.
void close_cuts(std::span<Edge> edges) {
    std::vector<Edge*> sorted;
    for (Edge& edge : edges) sorted.push_back(&edge);
    std::sort(sorted.begin(), sorted.end(), is_before);
    for (size_t i = 0; i + 1 < sorted.size(); ++i) {
        if (is_before(sorted[i], sorted[i + 1])) continue;
        sorted[i]->to = sorted[i]->from;
        sorted[i + 1]->to = sorted[i + 1]->from;
        ++i;
    }
}

void add_mesh(Outline& outline, const std::vector<Vector3>& corners) {
    const auto first_edge = static_cast<std::ptrdiff_t>(outline.edges.size());
    for (size_t i = 0; i < corners.size(); ++i)
        outline.edges.push_back({corners[i], corners[(i + 1) % corners.size()], 0});
    // Both edges of a mesh of two vertices have the same ends too, but are no cut.
    if (corners.size() > 2) close_cuts({outline.edges.begin() + first_edge, outline.edges.end()});
}

double length_of(const Edge& edge) {
    return std::hypot(double{edge.to.x} - edge.from.x, double{edge.to.y} - edge.from.y,
                      double{edge.to.z} - edge.from.z);
}

// Removes edges without a length and measures the others.
void measure(Outline& outline) {
    std::erase_if(outline.edges, [](const Edge& e) { return !(length_of(e) > 0); });
    outline.length = 0;
    outline.low_x = INFINITY;
    outline.high_x = -INFINITY;
    for (Edge& edge : outline.edges) {
        edge.end = outline.length += length_of(edge);
        outline.low_x = std::min(outline.low_x, edge.from.x);  // outlines are closed, so one end of each edge is enough
        outline.high_x = std::max(outline.high_x, edge.from.x);
    }
}

}  // namespace

void read_outline(Outline& outline, int32_t container_handle, int32_t geometry_handle, int32_t smoke_handle) {
    outline.edges.clear();
    outline.length = 0;
    if (geometry_handle == -1) return;
    int32_t detail = 0, access = 0, vertex_count = 0, mesh_count = 0, mesh = 0, vertex = 0;
    uint8_t flags[3] = {};
    _api__get_geom_detail(geometry_handle, &detail);
    _api__get_geom_geomod(geometry_handle, 2, detail, &access);
    if (access == 0) return;
    _api__geomod_init(access);
    _api__geomod_get_info(access, &vertex_count, &mesh_count, &flags[0], &flags[1], &flags[2]);

    Matrix to_world, to_smoke;
    _api__container_get_transformation_matrix(container_handle, to_world.m);
    if (smoke_handle != -1) _api__container_get_inverse_matrix(smoke_handle, to_smoke.m);
    for (int32_t i = 0; i < mesh_count; ++i) {
        i == 0 ? _api__geomod_goto_mesh(access, 0, &mesh) : _api__geomod_next_mesh(access, &mesh);
        _api__geomod_get_num_mesh_verices(access, mesh, &vertex_count);
        std::vector<Vector3> corners;
        for (int32_t j = 0; j < vertex_count; ++j) {
            j == 0 ? _api__geomod_goto_vertex(access, mesh, 0, &vertex)
                   : _api__geomod_next_vertex(access, mesh, &vertex);
            Vector3 corner{};
            _api__geomod_get_vertex(access, vertex, &corner.x, &corner.y, &corner.z);
            corner = transform(to_smoke, transform(to_world, corner));
            if (std::isfinite(corner.x + corner.y + corner.z)) corners.push_back(corner);
        }
        add_mesh(outline, corners);
    }
    measure(outline);
}

std::optional<Place> place_of(const Outline& outline, int32_t number) {
    if (outline.edges.empty()) return std::nullopt;
    // The fractional parts of multiples of the golden ratio are evenly spread for any count: each new one falls into
    // one of the widest gaps (Knuth, The Art of Computer Programming 3, 6.4).
    constexpr double kGoldenRatio = 0.6180339887498949;
    const double turns = number * kGoldenRatio;
    const double along = (turns - std::floor(turns)) * outline.length;
    const auto edge = std::lower_bound(outline.edges.begin(), outline.edges.end() - 1, along,
                                       [](const Edge& e, double x) { return e.end < x; });
    const float t = static_cast<float>((along - (edge->end - length_of(*edge))) / length_of(*edge));
    const Vector3 a = edge->from;
    const Vector3 b = edge->to;
    const Vector3 point{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
    const float width = outline.high_x - outline.low_x;
    return Place{point, width > 0 ? (point.x - outline.low_x) / width : 0};
}

}  // namespace gather
