#include "active_array.h"

#include <cstring>

#include "instance_caches.h"

namespace tovu {
namespace {

// The array is emptied at its front, as old particles die, and filled at its end: twice the pool's size means that it
// has to be shifted only once in as many births as the pool has records.
constexpr int32_t kRoomFactor = 2;

bool matches_links(const ActiveArray& active, const Particle* active_head) {
    if (!active.follows_links) return false;
    if (active.begin == active.end) return active_head == nullptr;
    return active.records[active.end - 1] == active_head;
}

bool fill_from_links(ActiveArray& active, Particle* active_head) {
    int32_t position = active.records.capacity();
    for (Particle* p = active_head; p != nullptr; p = p->next) {
        if (position == 0) return false;
        active.records[--position] = p;
    }
    active.begin = position;
    active.end = active.records.capacity();
    active.follows_links = true;
    return true;
}

void shift_to_front(ActiveArray& active) {
    const int32_t count = active.end - active.begin;
    std::memmove(active.records.data(), active.records.data() + active.begin,
                 static_cast<size_t>(count) * sizeof(Particle*));
    active.begin = 0;
    active.end = count;
}

}  // namespace

ActiveRecords active_records(const SmokeInstance& instance) {
    if (instance.caches == nullptr) return {nullptr, 0};
    const ActiveArray& active = instance.caches->active;
    if (active.records.data() == nullptr || !matches_links(active, instance.active_head)) return {nullptr, 0};
    return {active.records.data() + active.begin, active.end - active.begin};
}

ActiveArray* current_active_array(SmokeInstance& instance) {
    if (instance.caches == nullptr) return nullptr;
    ActiveArray& active = instance.caches->active;
    if (active.records.data() == nullptr) return nullptr;
    if (!matches_links(active, instance.active_head) && !fill_from_links(active, instance.active_head)) return nullptr;
    return &active;
}

void reserve_active_array(SmokeInstance& instance, int32_t count) {
    if (instance.caches == nullptr) return;
    instance.caches->active.records.reserve(kRoomFactor *
                                            count);  // too small an array clears follows_links when it is full
}

void enter_youngest(SmokeInstance& instance, Particle& particle) {
    if (instance.caches == nullptr) return;
    ActiveArray& active = instance.caches->active;
    if (!active.follows_links) return;
    if (active.end == active.records.capacity() && active.begin > 0) shift_to_front(active);
    if (active.end == active.records.capacity())
        active.follows_links = false;
    else
        active.records[active.end++] = &particle;
}

void forget_youngest(SmokeInstance& instance) {
    if (instance.caches == nullptr) return;
    ActiveArray& active = instance.caches->active;
    if (active.follows_links && active.end > active.begin) --active.end;
}

void forget_all(SmokeInstance& instance) {
    if (instance.caches == nullptr) return;
    ActiveArray& active = instance.caches->active;
    active.begin = active.end = 0;
    active.follows_links = true;
}

}  // namespace tovu
