// The array of live particles beside the links: with it and without it, a smoke lives the same life.
#include "particles/pool.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "failing_realloc.h"
#include "particles/active_array.h"
#include "particles/instance_caches.h"
#include "particles/particle_motion.h"
#include "random_seed.h"

namespace {

enum class Memory { kPlenty, kNoArray, kArrayStaysSmall };

/// An instance without a host: what needs none of its answers works.
struct Pool {
    explicit Pool(Memory with_memory) : memory(with_memory) {
        instance.time_step = 1;
        instance.parameters.life_time_scale = 100;
        if (memory != Memory::kNoArray) instance.caches = &caches;
        resize(8);
    }
    ~Pool() { release_particles(instance); }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    void resize(int32_t count) {
        instance.parameters.number_of_particles = count;
        realloc_fails = memory == Memory::kArrayStaysSmall && caches.active.records.capacity() > 0;
        sync_capacity(instance);
        realloc_fails = false;
    }
    void give_birth(float life, bool found) {
        Particle* p = instance.inactive_head;
        if (p == nullptr) return;
        move_to_active(instance, *p);
        if (!found) return move_to_inactive(instance, *p);
        append_youngest(instance, *p);
        p->age = 0;
        p->life = life;
        p->rotation = ++births;
        p->claimed = 0;
    }
    void claim(uint32_t pattern) {
        for (Particle* p = instance.active_head; p != nullptr; p = p->next)
            p->claimed = (pattern = pattern * 5 + 1) >> 30;
    }
    /// choice: 0 to 99. amount: 0 to 39.
    void operate(uint32_t choice, uint32_t amount) {
        if (choice < 35)
            for (uint32_t i = 0; i < amount; ++i)
                give_birth(static_cast<float>((choice * 40 + amount + 7 * i) % 12) * 0.5f, i % 8 != 3);
        else if (choice < 75)
            move_particles(instance);
        else if (choice < 88)
            resize(static_cast<int32_t>(amount * amount / 8));
        else if (choice < 92)
            claim(amount * 2654435761u);
        else if (choice < 95)
            instance.consumer_attached ^= 1;
        else if (choice < 97)
            purge_deleted(instance);
        else if (choice < 98)
            detach_particles(instance);
        else
            reset_particles(instance);
    }
    std::string trace() const {
        std::string text;
        for (const Particle* head : {instance.active_head, instance.inactive_head, instance.deleted_head}) {
            for (const Particle* p = head; p != nullptr; p = p->next)
                text += std::to_string(static_cast<int>(p->rotation)) + "@" + std::to_string(static_cast<int>(p->age)) +
                        (p->claimed ? "! " : " ");
            text += "| ";
        }
        return text;
    }
    /// Whether the array, where there is one, holds what the links hold.
    bool array_follows() const {
        const tovu::ActiveRecords active = active_records(instance);
        if (active.records == nullptr) return memory != Memory::kPlenty || instance.particle_count == 0;
        int32_t left = active.count;
        for (const Particle* p = instance.active_head; p != nullptr; p = p->next)
            if (left == 0 || active.records[--left] != p) return false;
        return left == 0;
    }

    Memory memory;
    tovu::SmokeInstance instance;
    tovu::InstanceCaches caches;
    float births = 0;
};

TEST(ActiveArray, ChangesNothing) {
    const tovu::RandomSeed seed;
    std::mt19937 generator(seed.value);
    Pool with(Memory::kPlenty), without(Memory::kNoArray), small(Memory::kArrayStaysSmall);
    for (int round = 0; round < 5000; ++round) {
        const auto choice = static_cast<uint32_t>(generator() % 100);
        const auto amount = static_cast<uint32_t>(generator() % 40);
        SCOPED_TRACE(testing::Message() << "round " << round << ", choice " << choice);
        for (Pool* pool : {&with, &without, &small}) {
            pool->operate(choice, amount);
            ASSERT_TRUE(pool->array_follows());
        }
        const std::string expected = without.trace();
        ASSERT_EQ(expected, with.trace());
        ASSERT_EQ(expected, small.trace());
    }
}

}  // namespace
