#include "cases.h"
#include "plain_frame.h"
#include "rand_choice.h"

namespace bench {
namespace {

constexpr Features kWhole{.turbulence = true, .sort = true, .arrays = true, .rotated = true, .facing = true};

void frame(Scene& scene, const Smoke& smoke) {
    scene.step(smoke);
    scene.pass(smoke);
}

Case frame_case(Scene& scene, int32_t count) {
    return {case_name("frame/smoke", count), static_cast<double>(count), [&scene, count](Stopwatch& watch) {
                Smoke& smoke = scene.long_run(count);
                set_features(smoke, kWhole);
                scene.next_frame();
                watch.start();
                frame(scene, smoke);
                watch.stop();
            }};
}

Case crowd_case(Scene& scene, const char* name, int32_t instances, int32_t count) {
    return {name, 1, [&scene, instances, count](Stopwatch& watch) {
                std::vector<Smoke>& smokes = scene.crowd(instances, count);
                for (Smoke& smoke : smokes) set_features(smoke, kWhole);
                scene.next_frame();
                watch.start();
                for (const Smoke& smoke : smokes) frame(scene, smoke);
                watch.stop();
            }};
}

Case idle_case(Scene& scene) {
    constexpr int32_t kInstances = 100;
    return {"frame/idle", kInstances, [&scene](Stopwatch& watch) {
                const std::vector<Smoke>& smokes = scene.idle(kInstances);
                scene.next_frame();
                watch.start();
                for (const Smoke& smoke : smokes) frame(scene, smoke);
                watch.stop();
            }};
}

// A pool that grows from empty to full in one frame. It is emptied before the next sample.
Case growth_case(Scene& scene) {
    return {"frame/pool_grows", 1, [&scene, smoke = std::make_shared<Smoke>()](Stopwatch& watch) {
                if (smoke->block == nullptr) *smoke = scene.make_smoke(0);
                set_features(*smoke, kWhole);
                smoke->block->parameters.number_of_particles = 0;
                scene.run(*smoke, 1);
                smoke->block->parameters.number_of_particles = kFull;
                smoke->block->parameters.birth_rate = 0;
                scene.next_frame();
                watch.start();
                frame(scene, *smoke);
                watch.stop();
            }};
}

}  // namespace

void add_frame_cases(std::vector<Case>& cases, Scene& scene) {
    for (const int32_t count : kCounts) cases.push_back(frame_case(scene, count));
    cases.push_back(with_stage_rand(case_name("frame/smoke_stage_rand", kFull), frame_case(scene, kFull)));
    cases.push_back({case_name("frame/plain", kFull), kFull, [&scene](Stopwatch& watch) {
                         Smoke& smoke = scene.long_run(kFull);
                         set_features(smoke, kWhole);
                         watch.start();
                         plain_step(*smoke.block);
                         plain_collect(*smoke.block);
                         build_with_library_sine(*smoke.block);
                         watch.stop();
                         links_changed(smoke);
                     }});
    cases.push_back(crowd_case(scene, "frame/1_smoke_of_25000", 1, 25000));
    cases.push_back(crowd_case(scene, "frame/5_smokes_of_5000", 5, 5000));
    cases.push_back(crowd_case(scene, "frame/25_smokes_of_1000", 25, 1000));
    cases.push_back(crowd_case(scene, "frame/250_smokes_of_100", 250, 100));
    cases.push_back(idle_case(scene));
    cases.push_back(growth_case(scene));
}

}  // namespace bench
