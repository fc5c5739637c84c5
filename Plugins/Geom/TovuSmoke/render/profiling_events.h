// The two sections of work that the host may time, registered once for all instances.
#pragma once

#include <cstdint>

namespace tovu {

extern int32_t sort_event;   // "Sort": the collection of the draw list as a whole
extern int32_t qsort_event;  // "qsort": its ordering alone

}  // namespace tovu
