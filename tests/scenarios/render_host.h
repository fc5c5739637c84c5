// A host that records OpenGL calls, and smokes whose particles a test places itself.
#pragma once

#include <tovu/opengl.h>

#include <string>
#include <vector>

#include "expect.h"
#include "stage/call_log.h"
#include "stage/opengl_table/recording_opengl.h"
#include "test_host.h"

namespace tovu {

/// A call as the log shows it.
template <class... Arguments>
std::string logged(const char* name, Arguments... arguments) {
    return stage::to_string(stage::make_call(name, arguments...));
}

class RenderHost : public TestHost {
  public:
    RenderHost() { stage::use_opengl(stage::recording_opengl()); }
    RenderHost(const RenderHost&) = delete;
    ~RenderHost() {
        stage::stop_recording_calls();
        stage::use_opengl(stage::silent_opengl());
    }

    /// A smoke with `count` particles alive, all at rest at the origin, with these values besides.
    SmokeHandle smoke_of(int count, const stage::ParameterValues& values = {}) {
        const stage::ParameterValues at_rest = {
            {"number_of_particles", count}, {"birth_rate", 1e7}, {"life_time", 1000.0}, {"initial_speed", 0.0}};
        const SmokeHandle smoke = add_smoke(with(at_rest, values));
        run_frames(2);
        return smoke;
    }

    /// The calls of one pass as text.
    std::vector<std::string> pass(SmokeHandle smoke, int32_t render_flags = 0, float opacity = 1.0f) {
        stage::forget_recorded_draws();
        start_recording();
        render(smoke, render_flags, opacity);
        std::vector<std::string> log = calls();
        stage::stop_recording_calls();
        return log;
    }
};

}  // namespace tovu
