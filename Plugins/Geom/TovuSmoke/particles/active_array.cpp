#include "active_array.h"

#include <cstring>

#include "instance_caches.h"

namespace tovu {
namespace {

// Births append at the end, and compaction after deaths frees room at the front. With room for twice the pool, the
// array is shifted to the front at most once in as many births as the pool has records.
constexpr int32_t kRoomFactor = 2;

// The head is compared too: a consumer may have changed the links.
bool is_current(const ActiveArray& active, const Particle* active_head) {
    if (!active.mirrors_links) return false;
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
    active.mirrors_links = true;
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
    if (active.records.data() == nullptr || !is_current(active, instance.active_head)) return {nullptr, 0};
    return {active.records.data() + active.begin, active.end - active.begin};
}

ActiveArray* current_active_array(SmokeInstance& instance) {
    if (instance.caches == nullptr) return nullptr;
    ActiveArray& active = instance.caches->active;
    if (active.records.data() == nullptr) return nullptr;
    if (!is_current(active, instance.active_head) && !fill_from_links(active, instance.active_head)) return nullptr;
    return &active;
}

void reserve_active_array(SmokeInstance& instance, int32_t count) {
    if (instance.caches == nullptr) return;
    // If it fails, a birth that finds the array full clears mirrors_links.
    instance.caches->active.records.reserve(kRoomFactor * count);
}

void append_youngest(SmokeInstance& instance, Particle& particle) {
    if (instance.caches == nullptr) return;
    ActiveArray& active = instance.caches->active;
    if (!active.mirrors_links) return;
    if (active.end == active.records.capacity() && active.begin > 0) shift_to_front(active);
    if (active.end == active.records.capacity())
        active.mirrors_links = false;
    else
        active.records[active.end++] = &particle;
}

void remove_youngest(SmokeInstance& instance) {
    if (instance.caches == nullptr) return;
    ActiveArray& active = instance.caches->active;
    if (active.mirrors_links && active.end > active.begin) --active.end;
}

void clear_active_array(SmokeInstance& instance) {
    if (instance.caches == nullptr) return;
    ActiveArray& active = instance.caches->active;
    active.begin = active.end = 0;
    active.mirrors_links = true;
}

}  // namespace tovu
