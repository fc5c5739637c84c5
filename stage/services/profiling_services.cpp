// Profiling: plug-ins begin and end sections of work.
#include <fmt/format.h>
#include <tovu/host_services.h>

#include "serve.h"

namespace stage {
namespace {

const ProfilingEvent* find_event(int32_t handle) {
    for (const auto& owner : loaded_plugins())
        for (const ProfilingEvent& event : owner->events)
            if (event.handle == handle) return &event;
    return nullptr;
}

void start_section(Stage& stage, int32_t handle) {
    if (const ProfilingEvent* event = find_event(handle))
        stage.profile.open.push_back({event, std::chrono::steady_clock::now()});
    else
        complain(stage, "pelEventStart", fmt::format("{} is not the handle of a profiling event", handle));
}

void report_span(const Stage& stage, const Profile::OpenSection& section) {
    if (!stage.profile.sink) return;
    const auto seconds = [](Profile::TimePoint::duration time) { return std::chrono::duration<double>(time).count(); };
    const Container* container =
        stage.running.empty() ? nullptr : find_container(stage, stage.running.back().container_handle);
    stage.profile.sink({section.event->name, container ? std::string_view(container->name) : std::string_view(),
                        seconds(section.start - stage.profile.origin),
                        seconds(std::chrono::steady_clock::now() - section.start)});
}

void end_section(Stage& stage, int32_t handle) {
    Profile& profile = stage.profile;
    const size_t outer = stage.running.empty() ? 0 : stage.running.back().open_sections;
    if (profile.open.size() <= outer || profile.open.back().event->handle != handle) {
        complain(stage, "pelEventEnd", fmt::format("profiling event {} does not end the section begun last", handle));
        return;
    }
    const Profile::OpenSection section = profile.open.back();
    profile.open.pop_back();
    report_span(stage, section);
}

}  // namespace
}  // namespace stage

using namespace stage;

void pelEventStart(int32_t event) {
    const auto start = [event] {
        if (Stage* stage = current_stage()) start_section(*stage, event);
    };
    watched(__func__, 0, start, event);
}

void pelEventEnd(int32_t event) {
    const auto end = [event] {
        if (Stage* stage = current_stage()) end_section(*stage, event);
    };
    watched(__func__, 0, end, event);
}
