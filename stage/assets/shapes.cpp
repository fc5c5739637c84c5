#include "shapes.h"

#include <cmath>
#include <numbers>

namespace stage {

Mesh make_rectangle(float width, float height) {
    const float x = width / 2, y = height / 2;
    return {{{-x, -y, 0}, {x, -y, 0}, {x, y, 0}, {-x, y, 0}}};
}

Mesh make_ellipse(float width, float height, int32_t segments) {
    Mesh mesh;
    for (int32_t i = 0; i < segments; ++i) {
        const double angle = 2 * std::numbers::pi * i / segments;
        mesh.vertices.push_back({static_cast<float>(double{width} / 2 * std::cos(angle)),
                                 static_cast<float>(double{height} / 2 * std::sin(angle)), 0.0f});
    }
    return mesh;
}

}  // namespace stage
