#include <benchmark/benchmark.h>
#include <tovu/opengl.h>

#include <cstdlib>
#include <cstring>

#include "cases.h"
#include "rand_choice.h"

namespace bench {
namespace {

// Reads and writes one field in each of the two cache lines of a record, without changing it.
void touch(Particle& p) {
    float x = p.position.x;
    float life = p.life;
    benchmark::DoNotOptimize(x);
    benchmark::DoNotOptimize(life);
    p.position.x = x;
    p.life = life;
}

void walk(Particle* head) {
    for (Particle* p = head; p != nullptr; p = p->next) touch(*p);
}

Case walk_along_links(Scene& scene, const char* name, int32_t count, bool cold) {
    return {case_name(name, count), static_cast<double>(count), [&scene, count, cold](Stopwatch& watch) {
                const Smoke& smoke = scene.long_run(count);
                if (cold) empty_caches();
                watch.start();
                walk(smoke.block->active_head);
                watch.stop();
            }};
}

Case walk_in_memory_order(Scene& scene, const char* name, int32_t count, bool cold) {
    return {case_name(name, count), static_cast<double>(count), [&scene, count, cold](Stopwatch& watch) {
                static std::map<int32_t, MemoryOrder> copies;
                MemoryOrder& copy = copies[count];
                copy_in_memory_order(scene.long_run(count), copy);
                if (cold) empty_caches();
                watch.start();
                walk(copy.block->active_head);
                watch.stop();
            }};
}

// Writes as many bytes as the quads of a list have: 48 for the corners and 16 for the colours of each.
Case stream_case(int32_t count) {
    return {case_name("floor/stream", count), static_cast<double>(count), [count](Stopwatch& watch) {
                alignas(64) static float vertices[kFull * 12];
                alignas(64) static uint8_t colors[kFull * 16];
                static float value = 0;
                value += 1;
                watch.start();
                for (int32_t i = 0; i < count; ++i) {
                    float corners[12];
                    for (float& coordinate : corners) coordinate = value;
                    std::memcpy(vertices + 12 * i, corners, sizeof corners);
                    std::memcpy(colors + 16 * i, corners, 16);
                }
                benchmark::ClobberMemory();
                watch.stop();
            }};
}

// The calls of one quad in immediate mode: one colour, then a texture coordinate and a vertex for each corner.
Case nine_calls_case(int32_t count) {
    return {case_name("floor/nine_calls", count), static_cast<double>(count), [count](Stopwatch& watch) {
                static const float corners[12] = {};
                watch.start();
                for (int32_t i = 0; i < count; ++i) {
                    ormixGL_glColor4ub(255, 255, 255, 255);
                    for (int corner = 0; corner < 4; ++corner) {
                        ormixGL_glTexCoord2s(0, 32767);
                        ormixGL_glVertex3fv(corners + 3 * corner);
                    }
                }
                watch.stop();
            }};
}

Case three_rands_case(int32_t count) {
    return {case_name("floor/three_rands", count), static_cast<double>(count), [count](Stopwatch& watch) {
                int sum = 0;
                watch.start();
                for (int32_t i = 0; i < 3 * count; ++i) sum ^= std::rand();
                watch.stop();
                benchmark::DoNotOptimize(sum);
            }};
}

}  // namespace

void add_floor_cases(std::vector<Case>& cases, Scene& scene) {
    for (const int32_t count : kCounts) {
        cases.push_back(walk_in_memory_order(scene, "floor/walk_in_memory_order", count, false));
        cases.push_back(walk_along_links(scene, "floor/walk_along_links", count, false));
        cases.push_back(stream_case(count));
    }
    cases.push_back(walk_in_memory_order(scene, "floor/walk_in_memory_order_cold", kFull, true));
    cases.push_back(walk_along_links(scene, "floor/walk_along_links_cold", kFull, true));
    cases.push_back(nine_calls_case(kFull));
    cases.push_back(three_rands_case(kFull));
    cases.push_back(with_stage_rand(case_name("floor/three_stage_rands", kFull), three_rands_case(kFull)));
}

}  // namespace bench
