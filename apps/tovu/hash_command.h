// `tovu hash`: digests of the frames of scenes.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

/// The options as texts of the command line; empty when not given.
struct HashOptions {
    std::vector<std::string> scenes;  // scene files
    std::string every;                // 1 or more
    std::string frames;               // "A-B" or "A", from 0, both included
    std::string plugin;               // library of the plug-in "smoke"
};

/// Runs the scenes without OpenGL. print: called with "NAME FRAME DIGEST" for each frame of the range whose number is
/// divisible by `every`. NAME is the scene file's name without its ending; DIGEST has 16 hexadecimal digits.
stage::Result<stage::Done> hash_scenes(const HashOptions& options,
                                       const std::function<void(const std::string& line)>& print);

}  // namespace tovu
