// Plays recorded calls to plug-ins, without the recorded scene.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "call_file.h"

namespace stage {

/// The first difference between a plug-in and the recording.
struct Difference {
    int line = 0;          // line number in the file
    std::string where;     // "frame 3, PLUGIN_NEW_GEOM("steam", 0)"
    std::string recorded;  // the recorded call or other action of the plug-in
    std::string now;
};

struct ReplayReport {
    int64_t calls = 0;   // equal calls of services and OpenGL functions
    int64_t frames = 0;  // started frames
    std::optional<Difference> difference;
};

/// The library of a plug-in by its registered name.
using PluginFinder = std::function<Result<std::string>(const std::string& name)>;

/// Calls the entry points as recorded, with the recorded parameters and random seed, answers each service with the
/// recorded answer, and compares calls, changes of slots and results of the plug-ins, and their state if it was
/// recorded and the plug-in has a field table. Ends at the first difference. Replaces the call watch and the OpenGL
/// functions during the replay. Errors: a plug-in does not load; a line cannot be played ("file:line: …").
STAGE_EXPORT Result<ReplayReport> replay_calls(const CallFile& file, const PluginFinder& find);

}  // namespace stage
