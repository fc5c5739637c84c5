// The particles of one pass in the order in which they are drawn.
#pragma once

#include "../instance/smoke_instance.h"
#include "sort.h"

namespace tovu {

/// One list for the whole library. Entries 0 to draw_count - 1 belong to the instance whose pass is running.
extern DrawEntry draw_list[kMaxParticles];

/// Profiling events, registered once for all instances.
extern int32_t sort_event;   // "Sort": all of `collect_draw_list`
extern int32_t qsort_event;  // "qsort": the ordering within it

/// Lists the instance's live particles in `draw_list` and sets `draw_count`: in active-list order or, with `sort` on,
/// farthest along the render camera's direction first. While a consumer is attached, particles that are neither claimed
/// nor released are skipped. At most kMaxParticles are visited, so that links that a consumer has joined into a ring
/// end.
void collect_draw_list(SmokeInstance& instance);

}  // namespace tovu
