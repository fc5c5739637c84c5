// Sections of work that plug-ins bracket for the host's clock.
#include <fmt/format.h>
#include <tovu/host_services.h>

#include <algorithm>

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
    EventTotals& totals = stage.profile.totals[handle];
    if (totals.name.empty()) {
        const ProfilingEvent* event = find_event(handle);
        if (!event) {
            stage.profile.totals.erase(handle);
            complain(stage, "pelEventStart", fmt::format("{} is not the handle of a profiling event", handle));
            return;
        }
        totals.name = event->name;
    }
    stage.profile.open.push_back({handle, std::chrono::steady_clock::now()});
}

void report_span(const Stage& stage, const EventTotals& totals, Profile::TimePoint start, double seconds) {
    if (!stage.profile.sink) return;
    const Container* container =
        stage.running.empty() ? nullptr : find_container(stage, stage.running.back().instance->container_handle);
    const double start_seconds = std::chrono::duration<double>(start - stage.profile.origin).count();
    stage.profile.sink(
        {totals.name, container ? std::string_view(container->name) : std::string_view(), start_seconds, seconds});
}

void end_section(Stage& stage, int32_t handle) {
    Profile& profile = stage.profile;
    const size_t outer = stage.running.empty() ? 0 : stage.running.back().open_sections;
    if (profile.open.size() <= outer || profile.open.back().event != handle) {
        complain(stage, "pelEventEnd", fmt::format("profiling event {} does not end the section begun last", handle));
        return;
    }
    const Profile::TimePoint start = profile.open.back().start;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    profile.open.pop_back();
    EventTotals& totals = profile.totals[handle];
    ++totals.count;
    totals.seconds += seconds;
    report_span(stage, totals, start, seconds);
}

}  // namespace
}  // namespace stage

using namespace stage;

void pelEventStart(int32_t event) {
    record_call(__func__, event);
    if (Stage* stage = current_stage()) start_section(*stage, event);
}

void pelEventEnd(int32_t event) {
    record_call(__func__, event);
    if (Stage* stage = current_stage()) end_section(*stage, event);
}
