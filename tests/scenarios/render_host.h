// A host whose OpenGL writes down what it is told, and smokes whose particles a test places itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/opengl.h"
#include "stage/call_log.h"
#include "stage/opengl/dispatch.h"
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
    SmokeHandle smoke_of(int count, stage::ParameterValues values = {}) {
        values.insert(
            values.begin(),
            {{"number_of_particles", count}, {"birth_rate", 1e7}, {"life_time", 1000.0}, {"initial_speed", 0.0}});
        const SmokeHandle smoke = add_smoke(values);
        run_frames(2);
        return smoke;
    }

    /// What one pass does, as text.
    std::vector<std::string> pass(SmokeHandle smoke, int32_t render_flags = 0, float opacity = 1.0f) {
        stage::forget_recorded_draws();
        start_recording();
        render(smoke, render_flags, opacity);
        std::vector<std::string> log = calls();
        stage::stop_recording_calls();
        return log;
    }
};

/// The calls from the first with the name `from` to the last with the name `to`; empty when either is missing.
inline std::vector<std::string> between(const std::vector<std::string>& log, std::string_view from,
                                        std::string_view to) {
    size_t first = log.size();
    size_t last = 0;
    for (size_t i = 0; i < log.size(); ++i) {
        if (first == log.size() && log[i].starts_with(from)) first = i;
        if (log[i].starts_with(to)) last = i + 1;
    }
    if (first >= last) return {};
    return {log.begin() + static_cast<std::ptrdiff_t>(first), log.begin() + static_cast<std::ptrdiff_t>(last)};
}

}  // namespace tovu
