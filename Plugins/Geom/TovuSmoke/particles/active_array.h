// The active list as an array of pointers. A walk over the array can prefetch records; following the links waits for
// each record in turn. The links are authoritative, since consumers read them; this array only mirrors them. If it
// cannot be allocated, walks follow the links.
#pragma once

#include "../instance/smoke_instance.h"
#include "../memory/buffer.h"

namespace tovu {

/// The live particles, oldest first, in records[begin … end).
struct ActiveArray {
    Buffer<Particle*> records;
    int32_t begin = 0;
    int32_t end = 0;
    bool mirrors_links = true;  // false: the array was full at a birth, or a walk is compacting it
};

/// The live particles, oldest first: the active list from its tail to its head. Walk it backwards for list order.
/// records: null when the array does not mirror the links; then follow the links. Valid until the next change of the
/// active list.
struct ActiveRecords {
    Particle* const* records;
    int32_t count;
};
ActiveRecords active_records(const SmokeInstance& instance);

/// The array, rebuilt from the links if it does not mirror them. Null if there is no memory for it.
ActiveArray* current_active_array(SmokeInstance& instance);

/// Reserves room for `count` live particles. Called when the pool grows, so that no other step allocates.
void reserve_active_array(SmokeInstance& instance, int32_t count);

/// Appends the particle that has just become the active head.
void append_youngest(SmokeInstance& instance, Particle& particle);

/// Removes the active head, which is about to leave the active list.
void remove_youngest(SmokeInstance& instance);

/// Empties the array, as the active list is emptied.
void clear_active_array(SmokeInstance& instance);

}  // namespace tovu
