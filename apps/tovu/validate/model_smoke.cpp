#include "model_smoke.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <cstring>

#include "watch.h"

namespace tovu::validate {
namespace {

constexpr int kRecords = 48;
constexpr int kLiveAtFirst = 24;
constexpr int kLongestHold = 12;  // frames that a record may stay claimed on the deleted list

/// The memory that consumers can access. Compared with a copy to find out what they changed.
struct Records {
    Particle* active;
    Particle* inactive;
    Particle* deleted;
    ParticleExchangeBlock block;
    Particle particles[kRecords];
};

struct Shadow {
    Records copy;
    int frames_deleted[kRecords];  // number of frames that a record has been on the deleted list
};

Shadow the_shadow;  // a check has one model smoke

Records& records_of(ModelSmoke& smoke) {
    return *reinterpret_cast<Records*>(smoke.memory.data());
}

void push(Particle*& head, Particle& particle) {
    particle.prev = nullptr;
    particle.next = head;
    if (head) head->prev = &particle;
    head = &particle;
}

void unlink(Particle*& head, Particle& particle) {
    if (particle.prev) particle.prev->next = particle.next;
    if (particle.next) particle.next->prev = particle.prev;
    if (head == &particle) head = particle.next;
}

void add_particle(ModelSmoke& smoke) {
    Records& records = records_of(smoke);
    Particle* newborn = records.inactive;
    if (!newborn) return;
    unlink(records.inactive, *newborn);
    const auto number = static_cast<float>(++smoke.births % 17);
    newborn->position = {number, 0.5f * number, 1};
    newborn->velocity = {0.1f, 0.2f * number, -0.1f};
    newborn->color[0] = newborn->color[1] = newborn->color[2] = 128;
    newborn->alpha = 200;
    newborn->size_x = newborn->size_y = 5;
    newborn->size_step_x = newborn->size_step_y = 0.1f;
    newborn->rotation = newborn->rotation_step = newborn->path_angle = 0;
    newborn->age = 0;
    newborn->life = 0.5f + 0.05f * number;
    newborn->accelerated = 0;
    newborn->claimed = 0;
    newborn->released = 0;
    push(records.active, *newborn);
}

void move_all(Records& records) {
    for (Particle *p = records.active, *next = nullptr; p; p = next) {
        next = p->next;
        if (p->claimed == 0 && !p->released) continue;
        p->age += 0.02f;
        p->position.x += p->velocity.x;
        p->position.y += p->velocity.y;
        p->position.z += p->velocity.z;
        if (!(p->age > p->life)) continue;
        unlink(records.active, *p);
        push(records.inactive, *p);
    }
}

int index_of(const Records& records, const Particle* particle) {
    return static_cast<int>(particle - records.particles);
}

void shrink_pool(Records& records) {
    Particle* leaving = records.active;
    if (!leaving) return;
    unlink(records.active, *leaving);
    push(records.deleted, *leaving);
    the_shadow.frames_deleted[index_of(records, leaving)] = 0;
}

// Returns records to the inactive list. A real smoke frees them; the model must not run out of records.
void free_deleted(Records& records) {
    for (Particle *p = records.deleted, *next = nullptr; p; p = next) {
        next = p->next;
        if (p->claimed != 0) continue;
        unlink(records.deleted, *p);
        push(records.inactive, *p);
    }
}

void detach_all(Records& records) {
    while (Particle* p = records.active) {
        p->claimed = 0;
        unlink(records.active, *p);
        push(records.inactive, *p);
    }
    for (Particle& particle : records.particles) particle.claimed = 0;
    free_deleted(records);
}

void remember(Records& records) {
    std::memcpy(&the_shadow.copy, &records, sizeof records);
}

void attach(ModelSmoke& smoke, const ParticleAttachRequest* request, void* reply) {
    constexpr const char* kRight = "data is a ParticleAttachRequest, reply the address of a ParticleExchangeBlock *";
    if (!request || !reply)
        return fail("consumer.manners", fmt::format("'RAD1' was sent without {}", request ? "a reply slot" : "data"),
                    kRight);
    if (!(request->death_acceleration >= 0 && request->death_acceleration <= 100))
        fail("consumer.manners", fmt::format("'RAD1' asks for a death acceleration of {}", request->death_acceleration),
             "0 to 100");
    Records& records = records_of(smoke);
    records.block = {&records.active, &records.inactive, records.deleted, kRecords, 0};
    remember(records);
    void* block = &records.block;
    std::memcpy(reply, &block, sizeof block);
    smoke.attached = true;
}

void detach(ModelSmoke& smoke, void* reply) {
    detach_all(records_of(smoke));
    remember(records_of(smoke));
    if (reply) std::memset(reply, 0, sizeof(void*));
    smoke.attached = false;
}

bool is_same(const ParticleExchangeBlock& a, const ParticleExchangeBlock& b) {
    return a.active_head == b.active_head && a.inactive_head == b.inactive_head && a.deleted_head == b.deleted_head &&
           a.particle_count == b.particle_count && a.reserved == b.reserved;
}

bool has_finite_fields(const Particle& p) {
    for (const float number : {p.position.x, p.position.y, p.position.z, p.velocity.x, p.velocity.y, p.velocity.z,
                               p.alpha, p.size_x, p.size_y, p.size_step_x, p.size_step_y, p.rotation, p.age, p.life})
        if (!std::isfinite(number)) return false;
    return true;
}

}  // namespace

void make_model_smoke(ModelSmoke& smoke, int32_t container_handle) {
    stage::Stage& stage = *watch().stage;
    smoke.container_handle = container_handle;
    smoke.geometry_handle = stage::set_mesh_geometry(stage, container_handle, {});
    smoke.memory = stage::FencedMemory(sizeof(Records), {stage::FenceSide::kBehind, 16, 0, false});
    smoke.attached = false;
    Records& records = *new (smoke.memory.data()) Records{};
    for (Particle& particle : records.particles) push(records.inactive, particle);
    for (int i = 0; i < kLiveAtFirst; ++i) add_particle(smoke);
    remember(records);
    watch().regions.push_back(
        {&smoke.memory, "consumer.lists", "the records of the smoke", "", "they are the smoke's: follow `next` only"});
}

void step_model_smoke(ModelSmoke& smoke) {
    if (!smoke.memory.is_open()) return;
    Records& records = records_of(smoke);
    for (Particle& particle : records.particles) ++the_shadow.frames_deleted[index_of(records, &particle)];
    free_deleted(records);
    move_all(records);
    for (int i = 0; i < 2; ++i) add_particle(smoke);
    if (smoke.attached && watch().stage->clock.frame % 4 == 3) shrink_pool(records);
    remember(records);
}

void remove_model_smoke(ModelSmoke& smoke) {
    smoke.attached = false;
    smoke.memory.forbid();
    for (FencedRegion& region : watch().regions)
        if (region.memory == &smoke.memory)
            region = {&smoke.memory, "consumer.manners", "the records of a smoke", " after it was gone",
                      "test the smoke's geometry with _api__object_valid and attach in every frame; keep no pointers"};
    stage::remove_geometry(*watch().stage, smoke.container_handle);
}

void answer_request(ModelSmoke& smoke, int32_t request, void* data, void* reply) {
    if (!smoke.answers) return;
    if (request == TOVU_REQUEST_ATTACH) attach(smoke, static_cast<const ParticleAttachRequest*>(data), reply);
    if (request == TOVU_REQUEST_DETACH) detach(smoke, reply);
}

void check_records(ModelSmoke& smoke) {
    if (!smoke.memory.is_open()) return;
    Records& records = records_of(smoke);
    const Records& before = the_shadow.copy;
    constexpr const char* kRight = "`next`, `prev` and the heads are the smoke's: read them, never write them";
    if (records.active != before.active || records.inactive != before.inactive || records.deleted != before.deleted)
        fail("consumer.lists", "changed the head of a list", kRight);
    if (!is_same(records.block, before.block)) fail("consumer.lists", "changed the exchange block", kRight);
    bool is_listed[kRecords] = {};
    for (const Particle* head : {before.active, before.deleted})
        for (const Particle* p = head; p; p = before.particles[index_of(records, p)].next)
            is_listed[index_of(records, p)] = true;
    for (int i = 0; i < kRecords; ++i) {
        Particle& p = records.particles[i];
        if (p.next != before.particles[i].next || p.prev != before.particles[i].prev)
            fail("consumer.lists", "changed the links of a particle", kRight);
        if (!is_listed[i] && std::memcmp(&p, &before.particles[i], offsetof(Particle, next)) != 0)
            fail("consumer.lists", "wrote into a particle that is neither live nor on the deleted list",
                 "keep no pointers to particles from one call to the next");
        if (!has_finite_fields(p))
            fail("consumer.lists", "wrote a number that is not finite into a particle", "finite numbers");
        if (p.age < 0 || p.age > p.life + 0.021f)
            fail("consumer.lists", fmt::format("left a particle with age {} and life {}", p.age, p.life),
                 "keep 0 <= age <= life");
    }
    // Repairs the reported changes, so that the check can continue.
    records.active = before.active;
    records.inactive = before.inactive;
    records.deleted = before.deleted;
    for (int i = 0; i < kRecords; ++i) {
        Particle& p = records.particles[i];
        p.next = before.particles[i].next;
        p.prev = before.particles[i].prev;
        if (has_finite_fields(p) && p.age >= 0 && p.age <= p.life) continue;
        const auto claimed = p.claimed;
        const auto released = p.released;
        p = before.particles[i];
        p.claimed = claimed;
        p.released = released;
    }
    remember(records);
}

void check_claims(ModelSmoke& smoke) {
    if (!smoke.memory.is_open() || !smoke.attached || !smoke.answers) return;
    Records& records = records_of(smoke);
    for (const Particle* p = records.active; p; p = p->next)
        if (p->claimed == 0 && !p->released)
            fail("consumer.manners",
                 "left a live particle neither claimed nor released: it stands still and is not drawn",
                 "look at every live particle in every frame");
    for (const Particle* p = records.deleted; p; p = p->next)
        if (p->claimed != 0 && the_shadow.frames_deleted[index_of(records, p)] > kLongestHold)
            fail("consumer.manners", "holds a record that left the pool long ago",
                 "clear `claimed` of all on the deleted list in every frame");
}

}  // namespace tovu::validate
