// The pool of records and its three lists. Every record is on exactly one; every insertion is at a head, so the active
// list runs from the youngest particle to the oldest and the inactive list hands out what joined it last.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Takes a record out between its neighbours. Its own links and the list heads stay: callers fix the head.
void unlink_particle(Particle& particle);

/// Moves a record of the active list, or of none, to the head of the inactive list.
void move_to_inactive(SmokeInstance& instance, Particle& particle);

/// Moves a record of the inactive list to the head of the active list.
void move_to_active(SmokeInstance& instance, Particle& particle);

/// Moves a record of the active or the inactive list to the head of the deleted list, out of the pool.
void move_to_deleted(SmokeInstance& instance, Particle& particle);

/// Brings the pool to `number_of_particles` records: new ones become inactive; surplus ones are taken from the inactive
/// list, then from the youngest live particles, and freed, or put on the deleted list while a consumer is attached.
/// Where memory runs out the pool stays smaller, and the next call tries again. The only place that allocates records.
void sync_capacity(SmokeInstance& instance);

/// Frees every record of the deleted list that the consumer has let go of.
void purge_deleted(SmokeInstance& instance);

/// Sends every live particle back to the pool. Flags and the birth time already accumulated stay.
void reset_particles(SmokeInstance& instance);

/// Sends every live particle back to the pool, takes every record from the consumer and empties the deleted list.
void detach_particles(SmokeInstance& instance);

/// Frees every record of the three lists.
void release_particles(SmokeInstance& instance);

}  // namespace tovu
