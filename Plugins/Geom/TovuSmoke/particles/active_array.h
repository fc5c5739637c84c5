// The live particles as an array of pointers beside the links: walked in list order it can be fetched ahead of use,
// where following links through shuffled memory waits for each record. It is never the truth: the links are, and
// where the array could not be allocated they are walked.
#pragma once

#include "../instance/smoke_instance.h"
#include "../memory/buffer.h"

namespace tovu {

/// The live particles as pointers, oldest first, in records[begin … end).
struct ActiveArray {
    Buffer<Particle*> records;
    int32_t begin = 0;
    int32_t end = 0;
    bool follows_links = true;  // false once a particle could not be entered: walk the links until it is filled anew
};

/// The live particles, oldest first: the active list from its tail to its head. Walk it backwards for list order.
/// records is null where the links have to be walked instead. Valid until a particle is born, dies or is moved.
struct ActiveRecords {
    Particle* const* records;
    int32_t count;
};
ActiveRecords active_records(const SmokeInstance& instance);

/// The array itself, filled anew from the links where it does not match them; null where there is none.
ActiveArray* current_active_array(SmokeInstance& instance);

/// Makes room for `count` live particles. Called when the pool grows, so that no other step allocates.
void reserve_active_array(SmokeInstance& instance, int32_t count);

/// Enters the particle that has just become the active head.
void enter_youngest(SmokeInstance& instance, Particle& particle);

/// Forgets the active head, which is about to leave the active list.
void forget_youngest(SmokeInstance& instance);

/// Forgets all: the active list is empty.
void forget_all(SmokeInstance& instance);

}  // namespace tovu
