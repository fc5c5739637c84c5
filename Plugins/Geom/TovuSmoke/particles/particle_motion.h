// The motion of all live particles in one step.
#pragma once

#include "../instance/smoke_instance.h"
#include "../sources/wind_field.h"

namespace tovu {

/// The smallest box around a set of positions. Without positions: minimum 1e7, maximum -1e7 on every axis.
struct Bounds {
    Vector3 low{1e7f, 1e7f, 1e7f};
    Vector3 high{-1e7f, -1e7f, -1e7f};
};

/// Widens the box to contain a position. NaN components are ignored.
inline void widen(Bounds& bounds, Vector3 p) {
    bounds.low.x = p.x < bounds.low.x ? p.x : bounds.low.x;
    bounds.low.y = p.y < bounds.low.y ? p.y : bounds.low.y;
    bounds.low.z = p.z < bounds.low.z ? p.z : bounds.low.z;
    bounds.high.x = p.x > bounds.high.x ? p.x : bounds.high.x;
    bounds.high.y = p.y > bounds.high.y ? p.y : bounds.high.y;
    bounds.high.z = p.z > bounds.high.z ? p.z : bounds.high.z;
}

/// Ages, retires, colours, moves, rotates and grows every live particle, youngest first, and returns their bounds.
/// While a consumer is attached, particles that are neither claimed nor released do not change and do not count in the
/// bounds. Draws the random numbers of the turbulence, particle by particle. Allocates nothing.
Bounds move_particles(SmokeInstance& instance);

}  // namespace tovu
