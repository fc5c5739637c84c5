#include "entry_point_call.h"

#include <fmt/format.h>

#include "instance_memory.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

double seconds_since_start(const Profile& profile) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - profile.origin).count();
}

const char* container_name(const Stage& stage, const Instance& instance) {
    const Container* container = find_container(stage, instance.container_handle);
    return container ? container->name.c_str() : "";
}

void close_sections(Stage& stage, size_t count, const char* entry_point) {
    Profile& profile = stage.profile;
    while (profile.open.size() > count) {
        const std::string& event = profile.open.back().event->name;
        complain(stage, "pelEventStart", fmt::format("'{}' was still open when {} returned", event, entry_point));
        profile.open.pop_back();
    }
}

}  // namespace

EntryPointCall::EntryPointCall(Stage& stage, Instance& instance, const char* entry_point,
                               std::span<const CallValue> arguments)
    : stage_(stage),
      previous_stage_(current_stage()),
      random_(stage.options.shared_random ? stream_in_force : &instance.random),
      code_(entry_point, plugin(instance.plugin).name.c_str(), container_name(stage, instance), stage.clock.frame) {
    make_current(&stage);
    stage.running.push_back(
        {entry_point, &instance, code_.plugin, instance.container_handle, stage.profile.open.size(), arguments});
    if (stage.profile.sink) start_seconds_ = seconds_since_start(stage.profile);
    if (call_watch && call_watch->entry_begins) call_watch->entry_begins(stage.running.back());
}

void EntryPointCall::set_result(int32_t result) {
    stage_.running.back().has_result = true;
    stage_.running.back().result = result;
}

EntryPointCall::~EntryPointCall() {
    const RunningCall call = stage_.running.back();
    if (call_watch && call_watch->entry_ends) call_watch->entry_ends(call);
    close_sections(stage_, call.open_sections, call.entry_point);
    for (const std::string& damage : repair_guards(*call.instance)) complain(stage_, call.entry_point, damage);
    if (stage_.profile.sink) {
        stage_.profile.sink(
            {call.entry_point, code_.container, start_seconds_, seconds_since_start(stage_.profile) - start_seconds_});
    }
    stage_.running.pop_back();
    make_current(previous_stage_);
}

}  // namespace stage
