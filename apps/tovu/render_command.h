// `tovu render`: a scene file into a picture, numbered pictures or a video.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

/// As given on the command line; an empty text was not given.
struct RenderOptions {
    std::string scene;                  // scene file
    std::string output;                 // x.png, x_%04d.png, x.mp4, x.mov, x.webm
    std::string at;                     // seconds
    std::string frames;                 // "A-B" or "A", from 0, both included
    std::string size;                   // "WIDTHxHEIGHT", pixels
    std::string seed;                   // 0 to 4294967295
    std::vector<std::string> settings;  // "container.parameter=value"
    std::string plugin;                 // library that "smoke" stands for
    std::string trace;                  // file for what the plug-ins' work took
    std::string plugin_timeout;         // seconds, 0 for none
    bool check_opengl = false;          // look for an error after every OpenGL call of a plug-in
};

struct RenderReport {
    int frames = 0;                       // pictures written
    std::vector<std::string> complaints;  // what plug-ins did against the contract, a line each
};

/// Called before the first and after each picture, from the thread that renders.
using RenderProgress = std::function<void(int frames_done, int frames_total)>;

/// Called with each thing that can be rendered, but hardly as intended: one line, without a newline.
using RenderWarning = std::function<void(const std::string& message)>;

/// The error has a line for each mistake, and says what would be right. Nothing is written then, except for the whole
/// pictures of a numbered row that came before a fault.
stage::Result<RenderReport> render_scene(const RenderOptions& options, const RenderProgress& progress,
                                         const RenderWarning& warn);

}  // namespace tovu
