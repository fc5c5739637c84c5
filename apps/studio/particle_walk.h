// Reads the particles of an instance through the plug-in's field table.
#pragma once

#include <optional>

#include "scene_facts.h"
#include "stage/plugins/instance.h"
#include "stage/replay/field_table.h"

namespace tovu {

/// Byte offsets of a plug-in's list of live particles and of the fields that the studio reads.
struct ParticlePlaces {
    size_t first = 0;  // in the block: pointer to the first live record
    size_t link = 0;   // in a record: pointer to the next record
    size_t age = 0;    // in a record: float32, seconds
    size_t life = 0;   // in a record: float32, seconds
};

/// None if the table has no list, or if the records lack the field "age" or "life".
std::optional<ParticlePlaces> find_particle_places(const stage::FieldTable& table);

/// The number of particles born in the latest frame: those at the front of the list that are younger than one and a
/// half frames. frame_seconds: the time between two frames.
int32_t count_births(const stage::Instance& instance, const ParticlePlaces& places, double frame_seconds);

/// Counts the live particles, in total and by age relative to their life.
void count_particles(const stage::Instance& instance, const ParticlePlaces& places, ParticleCounts& counts);

}  // namespace tovu
