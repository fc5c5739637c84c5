#include "cases.h"
#include "plain_frame.h"
#include "rand_choice.h"

namespace bench {
namespace {

constexpr Features kStep{};
constexpr Features kTurbulentStep{.turbulence = true};
constexpr Features kStepForArrays{.arrays = true};

Case fast_step(Scene& scene, const char* name, int32_t count, Features features, bool cold = false) {
    return {case_name(name, count), static_cast<double>(count), [&scene, count, features, cold](Stopwatch& watch) {
                Smoke& smoke = scene.long_run(count);
                set_features(smoke, features);
                scene.next_frame();
                if (cold) empty_caches();
                watch.start();
                scene.step(smoke);
                watch.stop();
            }};
}

Case plain_step_along_links(Scene& scene, const char* name, int32_t count, Features features, bool cold = false) {
    return {case_name(name, count), static_cast<double>(count), [&scene, count, features, cold](Stopwatch& watch) {
                Smoke& smoke = scene.long_run(count);
                set_features(smoke, features);
                if (cold) empty_caches();
                watch.start();
                plain_step(*smoke.block);
                watch.stop();
                links_changed(smoke);
            }};
}

Case plain_step_in_memory_order(Scene& scene, const char* name, int32_t count, Features features) {
    return {case_name(name, count), static_cast<double>(count), [&scene, count, features](Stopwatch& watch) {
                static std::map<int32_t, MemoryOrder> copies;
                Smoke& smoke = scene.long_run(count);
                set_features(smoke, features);
                MemoryOrder& copy = copies[count];
                copy_in_memory_order(smoke, copy);
                watch.start();
                plain_step(*copy.block);
                watch.stop();
            }};
}

}  // namespace

void add_step_cases(std::vector<Case>& cases, Scene& scene) {
    for (const int32_t count : kCounts) {
        cases.push_back(fast_step(scene, "step/smoke", count, kStep));
        cases.push_back(fast_step(scene, "step/smoke_for_arrays", count, kStepForArrays));
        cases.push_back(fast_step(scene, "step/smoke_turbulent", count, kTurbulentStep));
        cases.push_back(plain_step_in_memory_order(scene, "step/plain_in_memory_order", count, kStep));
        cases.push_back(plain_step_along_links(scene, "step/plain", count, kStep));
        cases.push_back(plain_step_along_links(scene, "step/plain_turbulent", count, kTurbulentStep));
    }
    cases.push_back(with_stage_rand(case_name("step/smoke_turbulent_stage_rand", kFull),
                                    fast_step(scene, "", kFull, kTurbulentStep)));
    cases.push_back(fast_step(scene, "step/smoke_cold", kFull, kStep, true));
    cases.push_back(plain_step_along_links(scene, "step/plain_cold", kFull, kStep, true));
}

}  // namespace bench
