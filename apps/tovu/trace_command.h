// `tovu trace`: the times and counts of a scene's frames as a table.
#pragma once

#include <string>

#include "stage/result.h"

namespace tovu {

/// The options as texts of the command line; empty when not given.
struct TraceOptions {
    std::string scene;   // scene file
    std::string frames;  // "A-B" or "A", from 0, both included
    std::string json;    // output file for each call, as `render --trace` writes it
    std::string plugin;  // library of the plug-in "smoke"
};

/// Runs and draws the scene without writing pictures. Rows of the table: simulation and drawing of a frame, each entry
/// point and profiling section of each container (milliseconds, nested sections included), the number of host services
/// that plug-ins called, the live particles of each container. Columns: median, 95th and 99th percentile (nearest rank)
/// and maximum over the frames, and the frame of the maximum. Ends with a newline.
stage::Result<std::string> trace_scene(const TraceOptions& options);

}  // namespace tovu
