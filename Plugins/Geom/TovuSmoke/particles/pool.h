// The pool of records and its three lists. Each record is on exactly one list. Records are inserted at the head, so the
// active list is ordered from the youngest particle to the oldest, and the inactive list is last in, first out.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Links the neighbours of a record to each other. Does not change the record's own links or the list heads: callers
/// update the head.
void unlink_particle(Particle& particle);

/// Moves a record of the active list, or a record of no list, to the head of the inactive list.
void move_to_inactive(SmokeInstance& instance, Particle& particle);

/// Moves a record of the inactive list to the head of the active list.
void move_to_active(SmokeInstance& instance, Particle& particle);

/// Moves a record of the active or the inactive list to the head of the deleted list. It leaves the pool.
void move_to_deleted(SmokeInstance& instance, Particle& particle);

/// Grows or shrinks the pool to `number_of_particles` records. New records become inactive. Surplus records are taken
/// from the inactive list, then from the youngest live particles; they are freed, or moved to the deleted list while a
/// consumer is attached. If an allocation fails the pool stays smaller and the next call tries again. No other function
/// allocates records.
void sync_capacity(SmokeInstance& instance);

/// Frees the records of the deleted list whose `claimed` is 0.
void purge_deleted(SmokeInstance& instance);

/// Returns all live particles to the pool. Keeps the flags and the accumulated birth time.
void reset_particles(SmokeInstance& instance);

/// Returns all live particles to the pool, clears `claimed` on every record and frees the deleted list.
void detach_particles(SmokeInstance& instance);

/// Frees all records of the three lists.
void release_particles(SmokeInstance& instance);

}  // namespace tovu
