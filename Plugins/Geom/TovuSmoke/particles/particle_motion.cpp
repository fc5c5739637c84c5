#include "particle_motion.h"

#include "active_array.h"
#include "particle_batch.h"
#include "particle_rules.h"
#include "pool.h"
#include "straight_walk.h"

namespace tovu {
namespace {

// A request to a spawn plug-in must see all random numbers of the particles before: then batches hold one particle.
int32_t batch_size(const StepValues& values) {
    return asks_plugin(values) ? 1 : kBatchSize;
}

/// Ages the particles of records[begin … end) from the end and gathers the survivors in `batch`. Survivors and those
/// that do not take part are compacted toward `survivors`, which moves down with them.
/// Returns false when a request emptied the active list: the walk ends.
bool gather_batch(SmokeInstance& instance, StepValues& values, Particle** begin, Particle** end, Particle**& survivors,
                  Batch& batch) {
    const float time_step = values.time_step;
    Particle** kept = survivors;
    int32_t count = 0;
    for (Particle** at = end; at != begin;) {
        Particle* const p = *--at;
        if (takes_part(*p, values)) {
            if (!survives(*p, time_step)) {
                move_to_inactive(instance, *p);
                continue;
            }
            if (values.accelerate && !p->accelerated) {
                accelerate_death(*p, values);
                if (asks_plugin(values)) {
                    if (instance.active_head == nullptr) return false;
                    update_after_request(values, instance);
                }
            }
            batch.age[count] = p->age;
            batch.life[count] = p->life;
            batch.records[count++] = p;
        }
        *--kept = p;
    }
    survivors = kept;
    batch.count = count;
    for (; count % 4 != 0; ++count) batch.age[count] = batch.life[count] = 0.0f;
    return true;
}

// Used where there is no memory for the array of active particles.
void walk_links(SmokeInstance& instance, StepValues& values, LaneBounds& bounds) {
    const int32_t most = batch_size(values);
    Particle* listed[kBatchSize];
    Particle** const end = listed + most;
    RecordPrefetcher no_prefetch{nullptr, nullptr};
    Batch batch;
    for (Particle* p = instance.active_head; p != nullptr;) {
        Particle** begin = end;  // listed first: a particle that dies is relinked into the inactive list
        for (; p != nullptr && begin != listed; p = p->next) *--begin = p;
        Particle** survivors = end;
        if (!gather_batch(instance, values, begin, end, survivors, batch)) return;
        move_batch(batch, values, instance, bounds, no_prefetch);
    }
}

void walk_array(SmokeInstance& instance, ActiveArray& active, StepValues& values, LaneBounds& bounds) {
    const int32_t most = batch_size(values);
    Particle** const first = active.records.data() + active.begin;
    Particle** end = active.records.data() + active.end;
    Particle** survivors = end;
    RecordPrefetcher prefetcher{first, end};
    prefetcher.next(most);
    Batch batch;
    active.mirrors_links = false;  // until the survivors are compacted; calls from inside a request use the links
    while (end != first) {
        Particle** const begin = end - first > most ? end - most : first;
        if (!gather_batch(instance, values, begin, end, survivors, batch)) return;  // the array was emptied too
        prefetcher.next(static_cast<int32_t>(end - begin) - batch.count);  // move_batch prefetches for the others
        move_batch(batch, values, instance, bounds, prefetcher);
        end = begin;
    }
    active.begin = static_cast<int32_t>(survivors - active.records.data());
    active.mirrors_links = true;
}

}  // namespace

Bounds move_particles(SmokeInstance& instance) {
    StepValues values;
    WindAngles spare_angles;
    set_step_values(values, instance, spare_angles);
    const Bounds empty;
    LaneBounds bounds{broadcast(empty.low.x), broadcast(empty.high.x)};
    ActiveArray* const active = current_active_array(instance);
    if (active == nullptr)
        walk_links(instance, values, bounds);
    else if (can_walk_straight(values))
        walk_straight(instance, *active, values, bounds);
    else
        walk_array(instance, *active, values, bounds);
    return {{bounds.low[0], bounds.low[1], bounds.low[2]}, {bounds.high[0], bounds.high[1], bounds.high[2]}};
}

}  // namespace tovu
