// Status and time.
#include <tovu/host_services.h>

#include "serve.h"

namespace stage {
namespace {

void on_air(const Service& service, uint8_t* out) {
    service.put(out, static_cast<uint8_t>(service.stage.clock.on_air));
}

void post_recording(const Service& service, uint8_t* out) {
    service.put(out, static_cast<uint8_t>(service.stage.clock.post_recording));
}

void post_time(const Service& service, float* seconds) {
    service.put(seconds, static_cast<float>(service.stage.clock.post_time_seconds));
}

void retrace(const Service& service, int32_t* counter) {
    service.put(counter, int32_t{service.stage.clock.retrace_counter});
}

void frame_period(const Service& service, double* seconds) {
    service.put(seconds, double{service.stage.clock.frame_period_seconds});
}

}  // namespace
}  // namespace stage

using namespace stage;

void _api__pellor_get_is_on_air(uint8_t* on_air_flag) {
    serve(__func__, &Overrides::is_on_air, on_air, on_air_flag);
}

void _api__pellor_get_is_post_recording(uint8_t* recording) {
    serve(__func__, &Overrides::is_post_recording, post_recording, recording);
}

void _api__pellor_get_post_current_time(float* seconds) {
    serve(__func__, &Overrides::post_current_time, post_time, seconds);
}

void _api__pellor_get_retrace_counter(int32_t* counter) {
    serve(__func__, &Overrides::retrace_counter, retrace, counter);
}

void _api__pellor_get_refreshrate(double* seconds_per_frame) {
    serve(__func__, &Overrides::refreshrate, frame_period, seconds_per_frame);
}
