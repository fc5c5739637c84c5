// Built-in shapes: one outline each in the x-y plane (z 0), counter-clockwise, centred on the origin.
#pragma once

#include <cstdint>

#include "stage/scene/mesh.h"

namespace stage {

/// width, height: units, above 0. Starts at the lower left corner.
Mesh make_rectangle(float width, float height);

/// width, height: units, above 0. `segments` (3 or more) corners on the ellipse, the first at its rightmost point.
Mesh make_ellipse(float width, float height, int32_t segments);

}  // namespace stage
