#include "polygon.h"

namespace tovu {
namespace {

template <float Vector3::*along>
bool point_in_polygon(int32_t count, const Vector3* vertices, Vector3 point) {
    bool inside = false;
    for (int32_t i = 0, before = count - 1; i < count; before = i++) {
        const Vector3& a = vertices[i];
        const Vector3& b = vertices[before];
        if (crosses_edge(a.x, a.*along, b.x, b.*along, point.x, point.*along)) inside = !inside;
    }
    return inside;
}

}  // namespace

bool point_in_polygon_xy(int32_t count, const Vector3* vertices, Vector3 point) {
    return point_in_polygon<&Vector3::y>(count, vertices, point);
}

bool point_in_polygon_xz(int32_t count, const Vector3* vertices, Vector3 point) {
    return point_in_polygon<&Vector3::z>(count, vertices, point);
}

}  // namespace tovu
