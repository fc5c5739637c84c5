// The smokes that are measured: full pools on a Stage whose OpenGL does nothing, driven through the plug-in's entry
// points.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "rounds.h"
#include "stage/plugins/plugin.h"
#include "test_host.h"

namespace bench {

/// What a case switches on of a smoke; everything else is as in scene.cpp.
struct Look {
    bool turbulence = false;  // on three axes
    bool sort = false;
    bool arrays = false;
    bool rotated = false;
    bool facing = false;  // the camera
};

struct Smoke {
    int32_t count;  // records of its pool
    tovu::SmokeHandle handle;
    tovu::SmokeInstance* block;
};

class Scene {
  public:
    /// long_run_frames: how long smokes have run before they are measured.
    explicit Scene(int long_run_frames);

    /// A smoke of `count` particles that has run for so long that its list runs through memory in random order, as any
    /// spread of life leads to. Made at the first call, the same one ever after.
    Smoke& long_run(int32_t count);

    /// `instances` smokes of `count` particles each, as above.
    std::vector<Smoke>& crowd(int32_t instances, int32_t count);

    /// Smokes without births.
    std::vector<Smoke>& idle(int32_t instances);

    Smoke make_smoke(int32_t count);
    void run(Smoke& smoke, int frames);

    void next_frame();  // the clock only
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

/// Writes the parameters that a look stands for into the smoke's slots.
void set_look(Smoke& smoke, Look look);

/// The live particles in list order.
std::vector<Particle*> listed(const Smoke& smoke);

/// Says that somebody else than the plug-in relinked the live particles.
void links_changed(Smoke& smoke);

/// A copy of a smoke whose records lie in memory in the order of its lists: the best that any walk can meet.
struct MemoryOrder {
    std::vector<Particle> records;
    std::unique_ptr<tovu::SmokeInstance> block;
};
void copy_in_memory_order(const Smoke& smoke, MemoryOrder& copy);

/// Reads 64 MiB, more than any cache of the machines at hand keeps.
void empty_caches();

}  // namespace bench
