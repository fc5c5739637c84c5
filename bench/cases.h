// The benchmark cases, by subject. Names are "subject/variant/count". Figures are seconds per particle unless stated
// otherwise. A case creates its fixtures when it first runs.
#pragma once

#include <vector>

#include "peers/peers.h"
#include "rounds.h"
#include "scene.h"

namespace bench {

/// The step: the plug-in's, and the plain version on the same records and on a copy in memory order.
void add_step_cases(std::vector<Case>& cases, Scene& scene);

/// Collecting and sorting the draw list.
void add_sort_cases(std::vector<Case>& cases, Scene& scene);

/// Turning the draw list into quads, by arrays and by immediate mode.
void add_quad_cases(std::vector<Case>& cases, Scene& scene);

/// Curves, outlines and images.
void add_source_cases(std::vector<Case>& cases, Scene& scene);

/// Step and pass together for one smoke, for several smokes in a scene, and for a pool that grows. The last two are in
/// seconds per frame.
void add_frame_cases(std::vector<Case>& cases, Scene& scene);

/// Counts memory allocations. Adds no case under AddressSanitizer, which replaces the allocator.
void add_allocation_cases(std::vector<Case>& cases, Scene& scene);

/// The least work that each task needs: lower bounds on this machine.
void add_floor_cases(std::vector<Case>& cases, Scene& scene);

/// Particle systems of other engines whose packages were installed at build time; peer_notes() states what each of them
/// does and does not do.
/// frames: number of frames that a system runs before it is measured.
void add_peer_cases(std::vector<Case>& cases, int frames);

std::vector<PeerNote> peer_notes();

}  // namespace bench
