// What one step does to the live particles.
#pragma once

#include "../instance/smoke_instance.h"
#include "../sources/wind_field.h"

namespace tovu {

/// The smallest box around positions; empty it is minimum 1e7, maximum -1e7 on every axis.
struct Bounds {
    Vector3 low{1e7f, 1e7f, 1e7f};
    Vector3 high{-1e7f, -1e7f, -1e7f};
};

/// Widens the box by a position; components that are not a number do not count.
inline void widen(Bounds& bounds, Vector3 p) {
    bounds.low.x = p.x < bounds.low.x ? p.x : bounds.low.x;
    bounds.low.y = p.y < bounds.low.y ? p.y : bounds.low.y;
    bounds.low.z = p.z < bounds.low.z ? p.z : bounds.low.z;
    bounds.high.x = p.x > bounds.high.x ? p.x : bounds.high.x;
    bounds.high.y = p.y > bounds.high.y ? p.y : bounds.high.y;
    bounds.high.z = p.z > bounds.high.z ? p.z : bounds.high.z;
}

/// Ages, retires, colours, moves, turns and grows every live particle, youngest first, and returns their bounds.
/// Particles that an attached consumer has neither claimed nor released are left exactly as they are.
/// Allocates nothing.
Bounds move_particles(SmokeInstance& instance);

}  // namespace tovu
