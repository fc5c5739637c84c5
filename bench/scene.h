// The smokes that are measured: full pools on a Stage with a silent OpenGL, driven through the plug-in's entry points.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "rounds.h"
#include "stage/plugins/plugin.h"
#include "test_host.h"

namespace bench {

/// Features that a case enables. All other parameters have the values in scene.cpp.
struct Features {
    bool turbulence = false;  // on three axes
    bool sort = false;
    bool arrays = false;
    bool rotated = false;
    bool facing = false;  // quads face the camera
};

struct Smoke {
    int32_t count;  // records of its pool
    tovu::SmokeHandle handle;
    tovu::SmokeInstance* block;
};

class Scene {
  public:
    /// long_run_frames: number of frames that a smoke runs before it is measured.
    explicit Scene(int long_run_frames);

    /// A smoke of `count` particles after long_run_frames: with a spread of life its list is in random memory order by
    /// then. The first call makes it, later calls return the same one.
    Smoke& long_run(int32_t count);

    /// `instances` smokes of `count` particles each, each as above.
    std::vector<Smoke>& crowd(int32_t instances, int32_t count);

    /// Smokes without births.
    std::vector<Smoke>& idle(int32_t instances);

    Smoke make_smoke(int32_t count);
    void run(Smoke& smoke, int frames);

    void next_frame();  // advances the clock only
    void step(const Smoke& smoke);
    void pass(const Smoke& smoke);

    tovu::TestHost& host() { return host_; }
    int long_run_frames() const { return long_run_frames_; }

  private:
    tovu::TestHost host_;
    const stage::EntryPoints& entry_points_;
    int long_run_frames_;
    std::map<int32_t, Smoke> long_run_;
    std::map<int32_t, std::vector<Smoke>> crowds_;  // by count; -1: idle
};

/// Writes the parameters of `features` into the smoke's slots.
void set_features(Smoke& smoke, Features features);

/// The live particles in list order.
std::vector<Particle*> listed(const Smoke& smoke);

/// Tells the plug-in that other code has relinked the live particles.
void links_changed(Smoke& smoke);

/// A copy of a smoke whose records are in memory in the order of its lists: the best case for a walk.
struct MemoryOrder {
    std::vector<Particle> records;
    std::unique_ptr<tovu::SmokeInstance> block;
};
void copy_in_memory_order(const Smoke& smoke, MemoryOrder& copy);

/// Reads 64 MiB, so that the caches no longer hold a smoke's records.
void empty_caches();

}  // namespace bench
