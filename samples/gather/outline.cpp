#include "outline.h"

#include <tovu/host_services.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <numeric>
#include <utility>

#include "host_objects.h"

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

// Room for `count` edges; what the outline held is dropped. False without memory.
bool reserve(Outline& outline, int32_t count) {
    if (count <= outline.capacity) return true;
    free_outline(outline);
    outline.edges = new (std::nothrow) Edge[static_cast<size_t>(count)];
    outline.order = new (std::nothrow) int32_t[static_cast<size_t>(count)];
    if (outline.edges == nullptr || outline.order == nullptr) return false;
    outline.capacity = count;
    return true;
}

void add_edge(Outline& outline, Vector3 from, Vector3 to) {
    const bool numbers = std::isfinite(from.x + from.y + from.z + to.x + to.y + to.z);
    if (numbers && outline.count < outline.capacity) outline.edges[outline.count++] = {from, to, 0};
}

// An edge is the same in whichever direction it is gone along: the lower end comes first.
using EdgeEnds = std::pair<std::array<float, 3>, std::array<float, 3>>;

EdgeEnds ends_of(const Edge& edge) {
    const std::array<float, 3> a{edge.from.x, edge.from.y, edge.from.z};
    const std::array<float, 3> b{edge.to.x, edge.to.y, edge.to.z};
    return a < b ? EdgeEnds{a, b} : EdgeEnds{b, a};
}

// A letter's hole is joined to its outer border by a cut, which the outline goes along twice. No smoke belongs there:
// edges of one mesh that lie on each other shrink to nothing. The order of the others stays, since places go by it.
void close_cuts(Outline& outline, int32_t first_edge) {
    const Edge* edges = outline.edges;
    int32_t* begin = outline.order;
    int32_t* end = begin + (outline.count - first_edge);
    std::iota(begin, end, first_edge);
    std::sort(begin, end, [edges](int32_t a, int32_t b) { return ends_of(edges[a]) < ends_of(edges[b]); });
    for (int32_t* i = begin; i + 1 < end; ++i) {
        if (ends_of(edges[i[0]]) != ends_of(edges[i[1]])) continue;
        outline.edges[i[0]].to = outline.edges[i[0]].from;
        outline.edges[i[1]].to = outline.edges[i[1]].from;
        ++i;
    }
}

// Lengths, and the extent in x. Edges without a length go.
void measure(Outline& outline) {
    int32_t kept = 0;
    for (int32_t i = 0; i < outline.count; ++i) {
        const Edge& edge = outline.edges[i];
        const Vector3 d{edge.to.x - edge.from.x, edge.to.y - edge.from.y, edge.to.z - edge.from.z};
        const double length = std::sqrt(static_cast<double>(d.x * d.x + d.y * d.y + d.z * d.z));
        if (!(length > 0)) continue;
        outline.length += length;
        outline.low_x = std::min({outline.low_x, edge.from.x, edge.to.x});
        outline.high_x = std::max({outline.high_x, edge.from.x, edge.to.x});
        outline.edges[kept++] = {edge.from, edge.to, outline.length};
    }
    outline.count = kept;
}

/// Reads vertices one after the other, each mapped into the smoke's coordinates.
struct VertexReader {
    int32_t mesh_access;
    int32_t mesh_cursor = -1;
    int32_t vertex_cursor = -1;
    Matrix to_world;
    Matrix to_smoke;

    Vector3 read() const {
        Vector3 v{};
        _api__geomod_get_vertex(mesh_access, vertex_cursor, &v.x, &v.y, &v.z);
        return transform(to_smoke, transform(to_world, v));
    }
};

void read_mesh(Outline& outline, VertexReader& reader) {
    int32_t vertex_count = 0;
    _api__geomod_get_num_mesh_verices(reader.mesh_access, reader.mesh_cursor, &vertex_count);
    if (vertex_count < 2) return;
    _api__geomod_goto_vertex(reader.mesh_access, reader.mesh_cursor, 0, &reader.vertex_cursor);
    const int32_t first_edge = outline.count;
    const Vector3 first = reader.read();
    Vector3 before = first;
    for (int32_t i = 1; i < vertex_count; ++i) {
        _api__geomod_next_vertex(reader.mesh_access, reader.mesh_cursor, &reader.vertex_cursor);
        const Vector3 next = reader.read();
        add_edge(outline, before, next);
        before = next;
    }
    add_edge(outline, before, first);
    if (vertex_count > 2) close_cuts(outline, first_edge);  // a line there and back is no cut
}

// 0 when the container carries no meshes.
int32_t open_meshes(int32_t container_handle) {
    const int32_t geometry_handle = geometry_of(container_handle);
    if (geometry_handle == -1) return 0;
    int32_t detail = 0;
    int32_t mesh_access = 0;
    _api__get_geom_detail(geometry_handle, &detail);
    _api__get_geom_geomod(geometry_handle, 2, detail, &mesh_access);
    if (mesh_access != 0) _api__geomod_init(mesh_access);
    return mesh_access;
}

}  // namespace

void read_outline(Outline& outline, const char* container_name, int32_t to_smoke_handle) {
    outline.count = 0;
    const int32_t container_handle = container_named(container_name);
    if (container_handle == -1) return;
    VertexReader reader{.mesh_access = open_meshes(container_handle), .to_world = {}, .to_smoke = {}};
    if (reader.mesh_access == 0) return;
    _api__container_get_transformation_matrix(container_handle, reader.to_world.m);
    if (to_smoke_handle != -1) _api__container_get_inverse_matrix(to_smoke_handle, reader.to_smoke.m);

    int32_t vertex_count = 0;
    int32_t mesh_count = 0;
    uint8_t flags[3] = {};
    _api__geomod_get_info(reader.mesh_access, &vertex_count, &mesh_count, &flags[0], &flags[1], &flags[2]);
    if (mesh_count <= 0 || !reserve(outline, vertex_count)) return;
    outline.length = 0;
    outline.low_x = INFINITY;
    outline.high_x = -INFINITY;
    _api__geomod_goto_mesh(reader.mesh_access, 0, &reader.mesh_cursor);
    for (int32_t i = 0; i < mesh_count; ++i) {
        if (i > 0) _api__geomod_next_mesh(reader.mesh_access, &reader.mesh_cursor);
        read_mesh(outline, reader);
    }
    measure(outline);
}

void free_outline(Outline& outline) {
    delete[] outline.edges;
    delete[] outline.order;
    outline = {};
}

Place place_of(const Outline& outline, int32_t number) {
    // Multiples of the golden ratio, less their whole part, never crowd: each falls into one of the widest gaps left.
    constexpr double kGoldenRatio = 0.6180339887498949;
    const double turns = number * kGoldenRatio;
    const double along = (turns - std::floor(turns)) * outline.length;
    const Edge* first = outline.edges;
    const Edge* last = first + outline.count - 1;
    const Edge* edge = std::lower_bound(first, last, along, [](const Edge& e, double x) { return e.end < x; });
    const double start = edge == first ? 0 : edge[-1].end;
    const float t = static_cast<float>((along - start) / (edge->end - start));
    const Vector3 a = edge->from;
    const Vector3 b = edge->to;
    const Vector3 point{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
    const float width = outline.high_x - outline.low_x;
    return {point, width > 0 ? (point.x - outline.low_x) / width : 0};
}

}  // namespace gather
