#include "schedule.h"

#include <tovu/host_services.h>

namespace gather {
namespace {

float step_seconds(Schedule& schedule) {
    uint8_t recording = 0;
    _api__pellor_get_is_post_recording(&recording);
    if (recording != 0) {
        float now = 0;
        _api__pellor_get_post_current_time(&now);
        const float before = schedule.last_post_time;
        schedule.last_post_time = now;
        return before < 0 ? 0 : now - before;
    }
    int32_t retrace = 0;
    _api__pellor_get_retrace_counter(&retrace);
    if (retrace == schedule.last_retrace) return 0;
    schedule.last_retrace = retrace;
    double period = 0;
    _api__pellor_get_refreshrate(&period);
    return static_cast<float>(period);
}

}  // namespace

bool advance(Schedule& schedule, const Slots& slots) {
    schedule.frame_seconds = step_seconds(schedule);
    if (!(schedule.frame_seconds > 0)) return false;
    if (schedule.mode != param::mode(slots)) {
        schedule.mode = param::mode(slots);
        schedule.seconds = 0;
    } else {
        schedule.seconds += static_cast<double>(schedule.frame_seconds);
    }
    return true;
}

Moment current_moment(const Schedule& schedule, const Slots& slots) {
    const float seconds = static_cast<float>(schedule.seconds);
    if (schedule.mode == kModeGather) return {Stage::Gathering, seconds};
    if (schedule.mode == kModeRelease) return {Stage::Releasing, seconds};
    const float begin = param::start_delay(slots);
    const float end = begin + param::gather_time(slots) + param::hold_time(slots);
    if (seconds < begin) return {Stage::Free, seconds};
    if (seconds < end) return {Stage::Gathering, seconds - begin};
    return {Stage::Releasing, seconds - end};
}

float pull_ramp(const Slots& slots, float seconds, float across) {
    const float whole = param::gather_time(slots);
    const float start = whole * across * param::sweep(slots) / 100;
    if (seconds >= whole) return 1;
    if (seconds <= start) return 0;
    const float x = (seconds - start) / (whole - start);
    return x * x * (3 - 2 * x);  // begins and ends gently
}

bool is_let_go(const Slots& slots, float seconds, float across) {
    return seconds >= param::release_time(slots) * across;
}

}  // namespace gather
