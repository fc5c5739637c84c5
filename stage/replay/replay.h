// Plays recorded calls to plug-ins, without the scene that they are from.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "call_file.h"

namespace stage {

/// Where a plug-in first does something else than when it was recorded.
struct Difference {
    int line = 0;          // of the file
    std::string where;     // "frame 3, PLUGIN_NEW_GEOM("steam", 0)"
    std::string recorded;  // the call, or what else the plug-in did
    std::string now;
};

struct ReplayReport {
    int64_t calls = 0;   // of services and OpenGL functions that agree
    int64_t frames = 0;  // that were begun
    std::optional<Difference> difference;
};

/// The library of a plug-in by its registered name.
using PluginFinder = std::function<Result<std::string>(const std::string& name)>;

/// Calls the entry points as recorded, with the recorded parameters and random seed, answers each service with the
/// recorded answer, and compares what the plug-ins call, write into their slots and return, and their state where it
/// was recorded and the plug-in has a field table. Ends at the first difference. Takes the place of the call watch and
/// of the OpenGL functions meanwhile. Error: a plug-in that does not load, or "file:line: …" for what cannot be played.
STAGE_EXPORT Result<ReplayReport> replay_calls(const CallFile& file, const PluginFinder& find);

}  // namespace stage
