#include "straight_walk.h"

#include "particle_rules.h"
#include "pool.h"
#include "prefetch_record.h"

namespace tovu {

bool can_walk_straight(const StepValues& values) {
    return !is_turbulent(values) && !values.wind_from_image && !values.follow_path && !values.accelerate &&
           !values.consumer;
}

void walk_straight(SmokeInstance& instance, ActiveArray& active, const StepValues& values, LaneBounds& bounds) {
    const Forces forces = forces_of(values);
    const float time_step = values.time_step;
    const bool stores_color = values.store_alpha;  // without a consumer both are stored or neither
    LaneBounds widened = bounds;                   // a copy, which the compiler keeps in registers
    Particle** const first = active.records.data() + active.begin;
    Particle** const end = active.records.data() + active.end;
    Particle** survivors = end;  // compacted toward the end of the array
    RecordPrefetcher prefetcher{first, end};
    prefetcher.next(kPrefetchDistance);
    for (Particle** at = end; at != first;) {
        prefetcher.next();
        Particle& p = **--at;
        if (!survives(p, time_step)) {
            move_to_inactive(instance, p);
            continue;
        }
        *--survivors = &p;
        const Float4 position = load_position(p) + load_velocity(p) + forces.wind_step;
        widen(widened, position);
        uint32_t color = load_color(p);
        if (stores_color) {
            const uint32_t index = color_index(p.age, p.life);
            color = color_entry(instance, index);
            write_alpha(p, instance, index);
        }
        advance(p, position, color, forces);
    }
    bounds = widened;
    active.begin = static_cast<int32_t>(survivors - active.records.data());
}

}  // namespace tovu
