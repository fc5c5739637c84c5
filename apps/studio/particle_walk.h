// Reads the particles of an instance through the plug-in's field table.
#pragma once

#include <optional>

#include "scene_facts.h"
#include "stage/plugins/instance.h"
#include "stage/replay/field_table.h"

namespace tovu {

/// Where a plug-in keeps its live particles, and what the studio reads of each.
struct ParticlePlaces {
    size_t first = 0;  // in the block: the address of the first live record
    size_t link = 0;   // in a record: the address of the next one
    size_t age = 0;    // in a record: float32, seconds
    size_t life = 0;   // in a record: float32, seconds
};

/// None when the table has no list, or its records no fields "age" and "life".
std::optional<ParticlePlaces> find_particle_places(const stage::FieldTable& table);

/// How many particles were born in the frame that was run last: the first ones of the list, which are younger than one
/// and a half frames. frame_seconds: the time between two frames.
int32_t count_births(const stage::Instance& instance, const ParticlePlaces& places, double frame_seconds);

/// Counts the live particles in total and by the part of their life that is over.
void count_particles(const stage::Instance& instance, const ParticlePlaces& places, ParticleCounts& counts);

}  // namespace tovu
