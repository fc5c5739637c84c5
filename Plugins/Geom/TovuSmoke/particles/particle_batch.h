// The motion of a batch of particles: each rule is applied to the whole batch before the next one, so that random
// numbers, pixel lookups and divisions stay out of the loop that moves the particles.
#pragma once

#include "particle_lanes.h"
#include "prefetch_record.h"

namespace tovu {

constexpr int32_t kBatchSize = 32;  // the records of a batch and of the next one fit the first-level cache

/// Live particles in list order. The caller fills the first group of fields, `move_batch` the second.
struct Batch {
    int32_t count = 0;
    Particle* records[kBatchSize];
    alignas(16) float age[kBatchSize];   // of the records; 0 from `count` up to the next multiple of 4
    alignas(16) float life[kBatchSize];  // likewise

    alignas(16) uint32_t color_index[kBatchSize];
    alignas(16) float turbulence[3][kBatchSize];  // displacement along x, y, z
    uint64_t pixels[kBatchSize];                  // offsets into the pixel data of the wind image
    Float4 wind_step[kBatchSize];                 // from the wind image; lane 3 is not used
};

/// Applies to each particle of the batch the part of the step that follows age and death: colour, motion, rotation,
/// size, bounds. Draws the random numbers of its turbulence, particle by particle. Prefetches one record for each
/// particle.
void move_batch(Batch& batch, const StepValues& values, const SmokeInstance& instance, LaneBounds& bounds,
                RecordPrefetcher& prefetcher);

}  // namespace tovu
