// Parts of a frame in a plain, unoptimised form, on the same records and with the same output arrays.
#pragma once

#include "instance/smoke_instance.h"

namespace bench {

/// A frame's births and motion. Does not update the array of active particles: call links_changed() afterwards.
void plain_step(tovu::SmokeInstance& block);

/// Collects the live particles with their depth keys and sorts them with std::stable_sort.
void plain_collect(tovu::SmokeInstance& block);

/// Builds each quad with the matrix operations that define it.
void build_plain(tovu::SmokeInstance& block);

/// Builds rotated quads that face the camera. Common values are computed before the loop; each quad's axes are rotated
/// with the C library's sine and cosine.
void build_with_library_sine(tovu::SmokeInstance& block);

}  // namespace bench
