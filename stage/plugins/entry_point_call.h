// Calls of an instance's entry points, with the instance's random stream and checks afterwards.
#pragma once

#include <array>
#include <type_traits>

#include "instance.h"
#include "plugin_code.h"
#include "stage/scene/call_watch.h"

namespace stage {

struct Stage;

/// Marks the instance's entry point as running while the object exists: the instance's Stage answers the services,
/// complaints name the instance, and `rand` draws from the instance's stream. The destructor restores the previous
/// state; open sections and overwritten guard bytes become complaints. Can be nested, for dispatcher calls.
class EntryPointCall {
  public:
    /// arguments: those after the instance; they must outlive the object.
    EntryPointCall(Stage& stage, Instance& instance, const char* entry_point, std::span<const CallValue> arguments);
    ~EntryPointCall();
    EntryPointCall(const EntryPointCall&) = delete;
    EntryPointCall& operator=(const EntryPointCall&) = delete;

    void set_result(int32_t result);

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
    const std::array<CallValue, sizeof...(arguments)> values = {CallValue(arguments)...};
    EntryPointCall call(stage, instance, name, values);
    const EntryPoint function = plugin(instance.plugin).entry_points.*entry_point;
    const auto run = [&] {
        if (call_watch && call_watch->entry_follows) call_watch->entry_follows();
        return function(instance.block, arguments...);
    };
    if constexpr (std::is_void_v<decltype(run())>) {
        call_plugin(run);
    } else {
        const auto result = call_plugin(run);
        call.set_result(result);
        return result;
    }
}

}  // namespace stage
