// Coordinates and orientation of the particles' quads, as one field of the block.
#pragma once

#include "parameters.h"

namespace tovu {

/// Local or World: the coordinates of the particles' positions (Reference). Flat quads lie in the x-y plane of these
/// coordinates; billboards face the camera (Billboard).
enum DrawMode : int32_t { kDrawLocalFlat = 0, kDrawLocalBillboard = 1, kDrawWorldFlat = 2, kDrawWorldBillboard = 3 };

constexpr DrawMode draw_mode_of(Reference reference, Billboard billboard) {
    return static_cast<DrawMode>(2 * reference + billboard);
}
static_assert(draw_mode_of(kReferenceLocal, kBillboardParticle) == kDrawLocalBillboard);
static_assert(draw_mode_of(kReferenceWorld, kBillboardNone) == kDrawWorldFlat);

/// Whether positions are in the container's coordinates.
constexpr bool positions_are_local(DrawMode mode) {
    return mode == kDrawLocalFlat || mode == kDrawLocalBillboard;
}

/// Whether the corners of quads are world coordinates. They are then drawn with the identity as the modelview matrix,
/// otherwise with the host's matrix.
constexpr bool corners_are_world(DrawMode mode) {
    return mode != kDrawLocalFlat;
}

}  // namespace tovu
