// `tovu render`: renders a scene file to pictures and videos.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "render_times.h"
#include "stage/result.h"

namespace tovu {

/// The options as texts of the command line; empty when not given.
struct RenderOptions {
    std::string scene;                  // scene file
    std::vector<std::string> outputs;   // files or patterns such as x_%04d.png; at least one
    std::string key;                    // video of the alpha, in addition to one video
    std::string alpha;                  // "straight" or "premultiplied"
    std::string bits;                   // per channel of PNG files: 8 or 16
    std::string sheet;                  // "COLUMNSxROWS" of the frames that a single picture shows
    std::string interlace;              // "top" or "bottom": the field of videos that comes first
    std::string codec;                  // of .mp4 files: "h264" or "h265"
    std::string at;                     // seconds
    std::string frames;                 // "A-B" or "A", from 0, both included
    std::string chunk;                  // "K/N": the K-th of N parts of the frames
    std::string from;                   // pattern of 16-bit pictures that replace the simulation
    bool resume = false;                // keep existing numbered pictures
    std::string size;                   // "WIDTHxHEIGHT", pixels
    std::string seed;                   // 0 to 4294967295
    std::string rate;                   // frames per second that the scene is converted to
    std::vector<std::string> settings;  // "container.parameter=value"
    std::string plugin;                 // library of the plug-in "smoke"
    std::string samples;                // per pixel, in scenes with visible shapes: 1 to 16
    std::string trace;                  // output file for the times of plug-in calls
    std::string plugin_timeout;         // seconds, 0 for no limit
    bool check_opengl = false;          // check for an error after each OpenGL call of a plug-in
};

struct RenderReport {
    std::vector<std::string> written;     // "clip.mp4: 250 frames", a line for each output
    std::vector<std::string> complaints;  // violations of the contract by plug-ins, one line each
    RenderTimes times;
};

/// Called on the rendering thread before the first and after each picture. frames_done: written frames.
using RenderProgress = std::function<void(int frames_done, int frames_total)>;

/// Called for each part of the scene that can be rendered but is probably a mistake. message: one line without a
/// newline.
using RenderWarning = std::function<void(const std::string& message)>;

/// The error has one line for each mistake, which says what would be right. After an error only complete output files
/// remain.
stage::Result<RenderReport> render_scene(const RenderOptions& options, const RenderProgress& progress,
                                         const RenderWarning& warn);

}  // namespace tovu
