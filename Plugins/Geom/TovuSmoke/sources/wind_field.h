// The wind that blows at a point.
#pragma once

#include "../smoke_instance.h"

namespace tovu {

/// The global wind in units per second: `wind_force` along +x, turned about z, then about x; under Reference World
/// times the container's scaling.
Vector3 global_wind(const SmokeInstance& instance);

}  // namespace tovu
