// `tovu record`: records every call between the Stage and the plug-ins of a scene.
#pragma once

#include <string>

#include "stage/result.h"

namespace tovu {

/// The options as texts of the command line; empty when not given.
struct RecordOptions {
    std::string scene;   // scene file
    std::string output;  // text file, replaced once it is complete
    std::string frames;  // number of frames, from frame 0 on
    std::string plugin;  // library of the plug-in "smoke"
};

/// Runs the scene and one pass per frame without OpenGL; returns the number of frames. The error has one line for each
/// mistake.
stage::Result<int> record_scene(const RecordOptions& options);

}  // namespace tovu
