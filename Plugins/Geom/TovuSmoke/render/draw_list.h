// The particles of one pass in drawing order.
#pragma once

#include "../instance/smoke_instance.h"
#include "sort.h"

namespace tovu {

/// One list for the whole library: entries 0 to draw_count - 1 of the instance whose pass is running.
extern DrawEntry draw_list[kMaxParticles];

/// Profiling events, registered once for all instances.
extern int32_t sort_event;   // "Sort": all of `collect_draw_list`
extern int32_t qsort_event;  // "qsort": the ordering within it

/// Lists the instance's live particles in `draw_list` and sets `draw_count`: in active-list order or, with `sort` on,
/// farthest along the render camera's direction first. While a consumer is attached, particles that it neither claimed
/// nor released are left out. At most kMaxParticles are listed, whatever a consumer made of the links.
void collect_draw_list(SmokeInstance& instance);

}  // namespace tovu
