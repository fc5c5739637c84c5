// The array of live particles beside the links: with it and without it, a smoke lives the same life.
#include "particles/pool.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "failing_realloc.h"
#include "particles/active_array.h"
#include "particles/particle_motion.h"

namespace {

using tovu::SmokeInstance;

enum class Memory { kPlenty, kNoArray, kArrayStaysSmall };

/// An instance without a host: what needs none of its answers works.
class Pool {
  public:
    explicit Pool(Memory memory) : memory_(memory) {
        instance_.time_step = 1;
        instance_.parameters.life_time_scale = 100;
        if (memory != Memory::kNoArray) instance_.speed_ups = &speed_ups_;
    }
    ~Pool() {
        release_particles(instance_);
        std::free(speed_ups_.active.records);
    }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    SmokeInstance& instance() { return instance_; }

    void resize(int32_t count) {
        instance_.parameters.number_of_particles = count;
        realloc_fails = memory_ == Memory::kArrayStaysSmall && speed_ups_.active.capacity > 0;
        sync_capacity(instance_);
        realloc_fails = false;
    }
    void give_birth(float life) {
        Particle* p = instance_.inactive_head;
        if (p == nullptr) return;
        move_to_active(instance_, *p);
        enter_youngest(instance_, *p);
        p->age = 0;
        p->life = life;
        p->rotation = ++births_;
        p->claimed = 0;
    }
    void fail_to_give_birth() {
        Particle* p = instance_.inactive_head;
        if (p == nullptr) return;
        move_to_active(instance_, *p);
        move_to_inactive(instance_, *p);
    }
    void claim(uint32_t pattern) {
        for (Particle* p = instance_.active_head; p != nullptr; p = p->next)
            p->claimed = (pattern = pattern * 5 + 1) >> 30;
    }
    std::string trace() const {
        return trace_of(instance_.active_head) + "| " + trace_of(instance_.inactive_head) + "| " +
               trace_of(instance_.deleted_head);
    }
    /// Compares the array, where there is one, with the links.
    void check_array() const {
        const tovu::ActiveRecords active = active_records(instance_);
        if (memory_ == Memory::kPlenty && instance_.particle_count > 0) {
            ASSERT_NE(nullptr, active.records);
        }
        if (active.records == nullptr) return;
        int32_t position = active.count;
        for (const Particle* p = instance_.active_head; p != nullptr; p = p->next) {
            ASSERT_GT(position, 0);
            ASSERT_EQ(p, active.records[--position]);
        }
        ASSERT_EQ(0, position);
    }

  private:
    static std::string trace_of(const Particle* head) {
        std::string text;
        const Particle* before = nullptr;
        for (const Particle* p = head; p != nullptr; before = p, p = p->next) {
            EXPECT_EQ(before, p->prev);
            text += std::to_string(static_cast<int>(p->rotation)) + "@" + std::to_string(static_cast<int>(p->age)) +
                    (p->claimed ? "! " : " ");
        }
        return text;
    }
    Memory memory_;
    SmokeInstance instance_;
    tovu::SpeedUps speed_ups_;
    float births_ = 0;
};

/// One operation for all pools alike.
std::string operate(std::vector<Pool*> pools, std::mt19937& generator) {
    const auto choice = static_cast<uint32_t>(generator() % 100);
    const auto amount = static_cast<uint32_t>(generator() % 40);
    const auto each = [&pools](const char* what, auto operation) {
        for (Pool* pool : pools) operation(*pool);
        return std::string(what);
    };
    if (choice < 35)
        return each("births", [&](Pool& pool) {
            std::mt19937 lives(choice * 40 + amount);
            for (uint32_t i = 0; i < amount; ++i) pool.give_birth(static_cast<float>(lives() % 12) * 0.5f);
        });
    if (choice < 70) return each("step", [](Pool& pool) { move_particles(pool.instance()); });
    if (choice < 80) return each("failed births", [](Pool& pool) { pool.fail_to_give_birth(); });
    if (choice < 90) return each("resize", [&](Pool& pool) { pool.resize(static_cast<int32_t>(amount * amount / 8)); });
    if (choice < 93) return each("claim", [&](Pool& pool) { pool.claim(amount * 2654435761u); });
    if (choice < 95) return each("attach", [](Pool& pool) { pool.instance().consumer_attached ^= 1; });
    if (choice < 97) return each("purge", [](Pool& pool) { purge_deleted(pool.instance()); });
    if (choice < 98) return each("detach", [](Pool& pool) { detach_particles(pool.instance()); });
    return each("reset", [](Pool& pool) { reset_particles(pool.instance()); });
}

TEST(ActiveArray, ChangesNothing) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    Pool with(Memory::kPlenty);
    Pool without(Memory::kNoArray);
    Pool small(Memory::kArrayStaysSmall);
    for (Pool* pool : {&with, &without, &small}) pool->resize(8);
    for (int round = 0; round < 5000; ++round) {
        const std::string operation = operate({&with, &without, &small}, generator);
        ASSERT_EQ(without.trace(), with.trace()) << operation << " in round " << round;
        ASSERT_EQ(without.trace(), small.trace()) << operation << " in round " << round;
        ASSERT_NO_FATAL_FAILURE(with.check_array()) << operation << " in round " << round;
        ASSERT_NO_FATAL_FAILURE(small.check_array()) << operation << " in round " << round;
    }
}

}  // namespace
