// How the Stage calls into an instance: with its random numbers, under its name, and checked afterwards.
#pragma once

#include "instance.h"
#include "plugin_code.h"

namespace stage {

struct Stage;

/// While it lives, the instance's entry point is the running one: services are answered by the instance's Stage and
/// know who asks, and `rand` draws from the instance's stream. When it ends, all is as before; sections left open and
/// guard bytes overwritten become complaints. Nests, since dispatcher calls do.
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

/// One of the entry points is running, or waits for a dispatcher call.
bool is_running(const Stage& stage, const Instance& instance);

template <class EntryPoint, class... Arguments>
auto call_entry_point(Stage& stage, Instance& instance, const char* name, EntryPoint EntryPoints::*entry_point,
                      Arguments... arguments) {
    const EntryPointCall call(stage, instance, name);
    const EntryPoint function = plugin(instance.plugin).entry_points.*entry_point;
    return call_plugin([&] { return function(instance.block, arguments...); });
}

}  // namespace stage
