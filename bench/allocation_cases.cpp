#include "cases.h"

#if !defined(__SANITIZE_ADDRESS__)

#include <cstdlib>
#include <stdexcept>

#include "allocation_count.h"

namespace bench {
namespace {

constexpr int kFrames = 200;

// Turbulence, the sort and all ways to draw.
constexpr Features kFeatureSets[] = {
    {.turbulence = true, .sort = true, .arrays = true, .rotated = true, .facing = true},
    {.turbulence = true, .sort = true, .rotated = true, .facing = true},
    {.sort = true, .arrays = true},
    {}};

void check_counter() {
    const long before = allocation_count();
    void* volatile block = std::malloc(1);
    int* volatile array = new int[2];
    if (allocation_count() != before + 2) throw std::runtime_error("the program's malloc does not see all allocations");
    delete[] array;
    std::free(block);
}

void run_frames(Scene& scene, Smoke& smoke, int count) {
    for (int frame = 0; frame < count; ++frame) {
        for (const Features& features : kFeatureSets) {
            set_features(smoke, features);
            scene.next_frame();
            scene.step(smoke);
            scene.pass(smoke);
        }
    }
}

}  // namespace

void add_allocation_cases(std::vector<Case>& cases, Scene& scene) {
    cases.push_back({"allocations/steady_frames", 1,
                     [&scene](Stopwatch& watch) {
                         check_counter();
                         Smoke& smoke = scene.long_run(1000);
                         run_frames(scene, smoke, 1);
                         const long before = allocation_count();
                         run_frames(scene, smoke, kFrames / 4);
                         watch.count(static_cast<double>(allocation_count() - before));
                     },
                     true});
}

}  // namespace bench

#else

void bench::add_allocation_cases(std::vector<Case>&, Scene&) {}

#endif
