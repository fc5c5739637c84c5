#include "gather.h"

#include <cmath>

#include "held_particle.h"
#include "host_objects.h"

namespace gather {
namespace {

// The smoke's geometry if it still is the one attached to, or may be attached to now; -1 without one.
int32_t find_smoke(int32_t& container_handle, const Slots& slots) {
    container_handle = container_named(param::smoke_container(slots));
    return container_handle == -1 ? -1 : geometry_of(container_handle);
}

// Attaches or refreshes. Null where the geometry is no smoke.
ParticleExchangeBlock* attach(int32_t geometry_handle, const Slots& slots) {
    ParticleAttachRequest request{param::birth_limit(slots), param::death_acceleration(slots),
                                  static_cast<uint8_t>(param::set_colour(slots))};
    ParticleExchangeBlock* block = nullptr;  // stays null where another plug-in takes the call and ignores it
    const int32_t taken = _api__geom_dispatcher(geometry_handle, TOVU_REQUEST_ATTACH, &request, &block);
    return taken ? block : nullptr;
}

// Records that left the pool are freed by the smoke once nobody holds them.
void let_go_of_deleted(const ParticleExchangeBlock& block) {
    for (Particle* p = block.deleted_head; p != nullptr; p = p->next) p->claimed = 0;
}

// Of a hundred particles offered, the share is claimed, evenly spread over them.
bool takes_next(Gather& gather) {
    const double share = static_cast<double>(param::share(gather.slots)) / 100;
    const double before = std::floor(gather.offered * share);
    return std::floor(++gather.offered * share) > before;
}

void claim_or_pass(Gather& gather, Particle& particle) {
    if (!takes_next(gather)) {
        particle.claimed = kFree;  // with neither flag it would stand still, unseen
        return;
    }
    particle.claimed = 1 + gather.next_number;
    particle.released = 0;
    gather.next_number = (gather.next_number + 1) & 0x3FFFFFFF;
}

void tend(Gather& gather, Particle& particle, const Moment& moment) {
    const Slots& slots = gather.slots;
    const float dt = gather.schedule.frame_seconds;
    float pull = 0;
    if (is_held(particle)) {
        const int32_t number = particle.claimed - 1;
        const Place place = place_of(gather.outline, number);
        if (moment.stage == Stage::Releasing && is_let_go(slots, moment.seconds, place.across)) {
            release(particle, number, slots, dt);
        } else {
            pull = moment.stage == Stage::Gathering ? pull_ramp(slots, moment.seconds, place.across) : 1;
            hold(particle, number, place, pull, slots, dt);
        }
    }
    if (param::set_colour(slots)) colour(particle, pull, slots, dt);
}

// Every live particle is claimed or released afterwards, and so moves and is seen.
void tend_all(Gather& gather, const ParticleExchangeBlock& block, const Moment& moment) {
    const bool has_shape = gather.outline.count > 0;
    const bool gathering = moment.stage == Stage::Gathering && has_shape;
    const bool begins = gathering && !gather.was_gathering;
    gather.was_gathering = gathering;
    for (Particle* p = *block.active_head; p != nullptr; p = p->next) {
        const bool newborn = p->claimed == 0 && p->released == 0;
        if (newborn && param::set_colour(gather.slots)) colour_newborn(*p, gather.slots);
        if (gathering && !is_held(*p) && (newborn || begins))
            claim_or_pass(gather, *p);
        else if (newborn)
            p->claimed = kFree;
        else if (is_held(*p) && (!has_shape || moment.stage == Stage::Free))
            drop(*p);
        tend(gather, *p, moment);
    }
}

}  // namespace

void run_frame(Gather& gather) {
    if (!advance(gather.schedule, gather.slots)) return;
    pelEventStart(gather_event);
    int32_t container_handle = -1;
    const int32_t geometry_handle = find_smoke(container_handle, gather.slots);
    if (geometry_handle != gather.smoke_geometry_handle) detach(gather);
    if (geometry_handle != -1) {
        const bool local = param::smoke_reference(gather.slots) != kReferenceWorld;
        read_outline(gather.outline, param::target_container(gather.slots), local ? container_handle : -1);
        const Moment moment = current_moment(gather.schedule, gather.slots);
        const bool wanted = moment.stage == Stage::Gathering && gather.outline.count > 0;
        // Once attached it stays so: a detach would take the released particles away.
        ParticleExchangeBlock* block =
            wanted || gather.smoke_geometry_handle != -1 ? attach(geometry_handle, gather.slots) : nullptr;
        gather.smoke_geometry_handle = block != nullptr ? geometry_handle : -1;
        if (block != nullptr) {
            let_go_of_deleted(*block);
            tend_all(gather, *block, moment);
        }
    }
    pelEventEnd(gather_event);
}

void restart(Gather& gather) {
    gather.schedule.seconds = 0;
    gather.was_gathering = false;
}

void detach(Gather& gather) {
    if (gather.smoke_geometry_handle != -1 && _api__object_valid(gather.smoke_geometry_handle)) {
        ParticleExchangeBlock* block = nullptr;
        _api__geom_dispatcher(gather.smoke_geometry_handle, TOVU_REQUEST_DETACH, nullptr, &block);
    }
    gather.smoke_geometry_handle = -1;
    gather.was_gathering = false;
}

}  // namespace gather
