// The pieces of a frame as a careful engineer writes them first, on the same records and into the same arrays.
#pragma once

#include "instance/smoke_instance.h"

namespace bench {

/// A frame's births and walk. The side array of the live particles is not brought along.
void plain_step(tovu::SmokeInstance& block);

/// Lists the live particles along the links, with keys, and sorts them with std::stable_sort.
void plain_collect(tovu::SmokeInstance& block);

/// Each quad by the matrix operations that define it.
void build_plain(tovu::SmokeInstance& block);

/// Rotated quads that face the camera: what all share is worked out before the loop, and a quad's axes are turned once,
/// by the library's sine and cosine, not its four corners.
void build_with_library_sine(tovu::SmokeInstance& block);

}  // namespace bench
