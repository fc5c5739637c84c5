// Frame number, time and status.
#pragma once

#include <cstdint>

namespace stage {

struct Clock {
    double frame_period_seconds = 0.02;
    int64_t frame = 0;           // counts from 0; below 0 while a scene is pre-warmed
    bool frame_has_run = false;  // the plug-ins have simulated this frame
    int32_t retrace_counter = 1;
    bool on_air = false;
    bool post_recording = false;
    double post_time_seconds = 0;  // advances with the frames while post_recording is set
};

}  // namespace stage
