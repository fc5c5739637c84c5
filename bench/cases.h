// Everything that is measured, by subject. Names are "subject/variant/count"; figures are seconds per particle unless a
// case says otherwise. Fixtures are made when a case first runs.
#pragma once

#include <vector>

#include "peers/peers.h"
#include "rounds.h"
#include "scene.h"

namespace bench {

/// The instance's step: the plug-in's, and the plain one on the same records and on a copy in memory order.
void add_step_cases(std::vector<Case>& cases, Scene& scene);

/// Collecting and sorting the draw list.
void add_sort_cases(std::vector<Case>& cases, Scene& scene);

/// Turning the draw list into quads, by arrays and by immediate mode.
void add_quad_cases(std::vector<Case>& cases, Scene& scene);

/// Curves, outlines and images.
void add_source_cases(std::vector<Case>& cases, Scene& scene);

/// Step and pass together; crowds of smokes; growth. Of crowds and growth figures are seconds per frame.
void add_frame_cases(std::vector<Case>& cases, Scene& scene);

/// How often memory is allocated. Left out under sanitizers, which allocate in their own way.
void add_allocation_cases(std::vector<Case>& cases, Scene& scene);

/// What the machine takes for the least that has to be done.
void add_floor_cases(std::vector<Case>& cases, Scene& scene);

/// Other particle systems, as far as their packages were there when this was built. Each says in peer_notes() what it
/// does and does not do.
/// frames: how long they run before they are measured.
void add_peer_cases(std::vector<Case>& cases, int frames);

std::vector<PeerNote> peer_notes();

}  // namespace bench
