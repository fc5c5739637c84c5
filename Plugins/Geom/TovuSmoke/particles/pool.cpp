#include "pool.h"

#include <cstdlib>
#include <new>

#include "active_array.h"

namespace tovu {
namespace {

void push(Particle*& head, Particle& particle) {
    if (head != nullptr) head->prev = &particle;
    particle.next = head;
    particle.prev = nullptr;
    head = &particle;
}

Particle* make_record() {
    void* memory = std::malloc(sizeof(Particle));
    return memory == nullptr ? nullptr : new (memory) Particle{};
}

void destroy_record(Particle& particle) {
    std::free(&particle);
}

void destroy_list(Particle*& head) {
    for (Particle* p = head; p != nullptr;) {
        Particle* next = p->next;  // read first: p is gone afterwards
        destroy_record(*p);
        p = next;
    }
    head = nullptr;
}

int32_t grow_pool(SmokeInstance& instance, int32_t count) {
    int32_t made = 0;
    for (; made < count; ++made) {
        Particle* particle = make_record();
        if (particle == nullptr) break;
        move_to_inactive(instance, *particle);
    }
    return made;
}

void remove_from_pool(SmokeInstance& instance, Particle& particle) {
    if (&particle == instance.active_head) remove_youngest(instance);
    if (instance.consumer_attached) {
        move_to_deleted(instance, particle);  // the consumer may still use it
        return;
    }
    if (&particle == instance.active_head)
        instance.active_head = particle.next;
    else
        instance.inactive_head = particle.next;
    unlink_particle(particle);
    destroy_record(particle);
}

void shrink_pool(SmokeInstance& instance, int32_t count) {
    for (int32_t removed = 0; removed < count; ++removed) {
        Particle* taken = instance.inactive_head != nullptr ? instance.inactive_head : instance.active_head;
        if (taken == nullptr) return;
        remove_from_pool(instance, *taken);
    }
}

}  // namespace

void unlink_particle(Particle& particle) {
    if (particle.next != nullptr) particle.next->prev = particle.prev;
    if (particle.prev != nullptr) particle.prev->next = particle.next;
}

void move_to_inactive(SmokeInstance& instance, Particle& particle) {
    if (&particle == instance.active_head) instance.active_head = particle.next;
    unlink_particle(particle);
    push(instance.inactive_head, particle);
}

void move_to_active(SmokeInstance& instance, Particle& particle) {
    if (&particle == instance.inactive_head) instance.inactive_head = particle.next;
    unlink_particle(particle);
    push(instance.active_head, particle);
}

void move_to_deleted(SmokeInstance& instance, Particle& particle) {
    if (&particle == instance.active_head)
        instance.active_head = particle.next;
    else if (&particle == instance.inactive_head)
        instance.inactive_head = particle.next;
    unlink_particle(particle);
    push(instance.deleted_head, particle);
}

void sync_capacity(SmokeInstance& instance) {
    const int32_t wanted = param::number_of_particles(instance.parameters);
    if (wanted == instance.particle_count) return;
    const int32_t difference = wanted - instance.particle_count;
    if (difference > 0) {
        instance.particle_count += grow_pool(instance, difference);
        reserve_active_array(instance, instance.particle_count);
    } else {
        shrink_pool(instance, -difference);
        instance.particle_count = wanted;
    }
}

void purge_deleted(SmokeInstance& instance) {
    for (Particle* p = instance.deleted_head; p != nullptr;) {
        Particle* next = p->next;
        if (p->claimed == 0) {
            if (p == instance.deleted_head) instance.deleted_head = next;
            unlink_particle(*p);
            destroy_record(*p);
        }
        p = next;
    }
}

void reset_particles(SmokeInstance& instance) {
    while (instance.active_head != nullptr) move_to_inactive(instance, *instance.active_head);
    clear_active_array(instance);
}

void detach_particles(SmokeInstance& instance) {
    for (Particle* p = instance.active_head; p != nullptr;) {
        Particle* next = p->next;  // read first: the move relinks p into the inactive list
        p->claimed = 0;
        move_to_inactive(instance, *p);
        p = next;
    }
    clear_active_array(instance);
    for (Particle* p = instance.inactive_head; p != nullptr; p = p->next) p->claimed = 0;
    destroy_list(instance.deleted_head);
}

void release_particles(SmokeInstance& instance) {
    destroy_list(instance.active_head);
    destroy_list(instance.inactive_head);
    destroy_list(instance.deleted_head);
    clear_active_array(instance);
}

}  // namespace tovu
