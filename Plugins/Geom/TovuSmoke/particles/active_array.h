// The live particles as an array of pointers beside the links: walked in list order it can be fetched ahead of use,
// where following links through shuffled memory waits for each record. It is never the truth: the links are, and
// where the array could not be allocated they are walked.
#pragma once

#include "../smoke_instance.h"

namespace tovu {

/// The live particles, oldest first: the active list from its tail to its head. Walk it backwards for list order.
/// records is null where the links have to be walked instead. Valid until a particle is born, dies or is moved.
struct ActiveRecords {
    Particle* const* records;
    int32_t count;
};
ActiveRecords active_records(const SmokeInstance& instance);

}  // namespace tovu
