// Calls of an instance's entry points: with the instance's random numbers, and checked afterwards.
#pragma once

#include "instance.h"
#include "plugin_code.h"
#include "stage/scene/call_watch.h"

namespace stage {

struct Stage;

/// While it lives, the instance's entry point is the running one: the instance's Stage answers the services, complaints
/// name the instance, and `rand` draws from the instance's stream. The destructor restores what was before; sections
/// left open and overwritten guard bytes become complaints. Nests, since dispatcher calls do.
class EntryPointCall {
  public:
    EntryPointCall(Stage& stage, Instance& instance, const char* entry_point);
    ~EntryPointCall();
    EntryPointCall(const EntryPointCall&) = delete;
    EntryPointCall& operator=(const EntryPointCall&) = delete;

  private:
    Stage& stage_;
    Stage* previous_stage_;
    DrawFrom random_;
    double start_seconds_ = 0;
    PluginCode code_;
};

template <class EntryPoint, class... Arguments>
auto call_entry_point(Stage& stage, Instance& instance, const char* name, EntryPoint EntryPoints::*entry_point,
                      Arguments... arguments) {
    const EntryPointCall call(stage, instance, name);
    const EntryPoint function = plugin(instance.plugin).entry_points.*entry_point;
    return call_plugin([&] {
        if (call_watch && call_watch->entry_follows) call_watch->entry_follows();
        return function(instance.block, arguments...);
    });
}

}  // namespace stage
