#include "scene.h"

#include <benchmark/benchmark.h>

#include <cstring>

#include "particles/instance_caches.h"
#include "render/draw_list.h"

namespace bench {
namespace {

constexpr int32_t kIdle = -1;

// The birth rate replaces each dead particle in the next frame, so the pool stays full.
stage::ParameterValues full_pool(int32_t count) {
    return {{"number_of_particles", count},
            {"birth_rate", 1e7},
            {"life_time", 3.0},
            {"life_time_spread", 50.0},
            {"spawn_range_x", 200.0},
            {"spawn_range_y", 50.0},
            {"spawn_range_z", 200.0},
            {"initial_speed_spread", 30.0},
            {"size_birth_spread_x", 20.0},
            {"gravity", 1.0},
            {"wind_force", 10.0},
            {"wind_rot_z", 30.0},
            {"air_resistance", 10.0},
            {"alpha_curve", std::string("0 0 0.1 0.6 0.5 0.4 1 0")},
            {"color", std::string("0 1 0.8 0.5 0.4 0.5 0.5 0.5 1 0.1 0.1 0.1")}};
}

void append(std::vector<Particle>& records, Particle*& head) {
    Particle* copy_before = nullptr;
    for (const Particle* p = head; p != nullptr; p = p->next) {
        records.push_back(*p);
        Particle& copy = records.back();
        copy.prev = copy_before;
        copy.next = nullptr;
        if (copy_before != nullptr)
            copy_before->next = &copy;
        else
            head = &copy;
        copy_before = &copy;
    }
}

}  // namespace

Scene::Scene(int long_run_frames)
    : entry_points_(stage::loaded_plugins()[static_cast<size_t>(host_.smoke_plugin())]->entry_points),
      long_run_frames_(long_run_frames) {
    // Functions that are linked into this program use the events that the library registered.
    const auto& plugin = *stage::loaded_plugins()[static_cast<size_t>(host_.smoke_plugin())];
    tovu::sort_event = plugin.events.at(0).handle;
    tovu::qsort_event = plugin.events.at(1).handle;
}

Smoke Scene::make_smoke(int32_t count) {
    const tovu::SmokeHandle handle = host_.add_smoke(full_pool(count));
    return {count, handle, &host_.block(handle)};
}

void Scene::run(Smoke& smoke, int frames) {
    for (int i = 0; i < frames; ++i) {
        next_frame();
        step(smoke);
    }
}

Smoke& Scene::long_run(int32_t count) {
    const auto found = long_run_.find(count);
    if (found != long_run_.end()) return found->second;
    Smoke& smoke = long_run_.emplace(count, make_smoke(count)).first->second;
    run(smoke, long_run_frames_);
    return smoke;
}

std::vector<Smoke>& Scene::crowd(int32_t instances, int32_t count) {
    std::vector<Smoke>& smokes = crowds_[count];
    while (smokes.size() < static_cast<size_t>(instances)) {
        smokes.push_back(make_smoke(count));
        run(smokes.back(), long_run_frames_);
    }
    return smokes;
}

std::vector<Smoke>& Scene::idle(int32_t instances) {
    std::vector<Smoke>& smokes = crowds_[kIdle];
    while (smokes.size() < static_cast<size_t>(instances)) {
        const tovu::SmokeHandle handle = host_.add_smoke({{"birth_rate", 0.0}});
        smokes.push_back({0, handle, &host_.block(handle)});
    }
    return smokes;
}

void Scene::next_frame() {
    stage::advance_frame(host_.stage());
}

void Scene::step(const Smoke& smoke) {
    entry_points_.new_geom(smoke.block, 0);
}

void Scene::pass(const Smoke& smoke) {
    entry_points_.render_opengl(smoke.block, 0, 1.0f);
}

void set_features(Smoke& smoke, Features features) {
    tovu::ParameterSlots& p = smoke.block->parameters;
    p.turbulence_x = p.turbulence_y = p.turbulence_z = features.turbulence ? 5.0f : 0.0f;
    p.sort = features.sort;
    p.use_array = features.arrays;
    p.rot_start_spread = p.rot_change_spread = features.rotated ? 100.0f : 0.0f;
    p.billboard = features.facing ? tovu::kBillboardParticle : tovu::kBillboardNone;
}

std::vector<Particle*> listed(const Smoke& smoke) {
    std::vector<Particle*> list;
    for (Particle* p = smoke.block->active_head; p != nullptr; p = p->next) list.push_back(p);
    return list;
}

void links_changed(Smoke& smoke) {
    smoke.block->caches->active.mirrors_links = false;
}

void copy_in_memory_order(const Smoke& smoke, MemoryOrder& copy) {
    if (!copy.block) copy.block = std::make_unique<tovu::SmokeInstance>();
    std::memcpy(static_cast<void*>(copy.block.get()), smoke.block, sizeof(tovu::SmokeInstance));
    copy.block->caches = nullptr;
    copy.records.reserve(static_cast<size_t>(smoke.count));
    copy.records.clear();
    append(copy.records, copy.block->active_head);
    append(copy.records, copy.block->inactive_head);
    for (const Particle& p : copy.records) benchmark::DoNotOptimize(p.life);  // leaves the caches as after a walk
}

void empty_caches() {
    static const std::vector<char> block(64u << 20, 1);
    int sum = 0;
    for (size_t i = 0; i < block.size(); i += 64) sum += block[i];
    benchmark::DoNotOptimize(sum);
}

}  // namespace bench
