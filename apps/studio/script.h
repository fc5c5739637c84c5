// Scripts: files of events for tests and for the pictures in documents. The events go through SDL's queue, as real
// events do.
#pragma once

#include <SDL.h>

#include <chrono>
#include <deque>
#include <string>
#include <vector>

#include "panels.h"
#include "studio.h"
#include "window.h"

namespace tovu {

/// A line of a script is one of:
///   time real               uses the real clock, for measurements; only `size` may stand before it
///   size WIDTH HEIGHT       sets the window's size; as the first line, the size at opening
///   wait picture            waits until the newest scene is drawn and no seek is running
///   wait export             waits until the export has ended; the scene's time stands still
///   wait frames N           waits N frames of the window, 1/60 s each
///   wait TARGET             waits until the target is in the window
///   click TARGET [double|right|ctrl]
///   drag TARGET DX DY [shift|alt]   pixels, in ten steps
///   wheel TARGET STEPS
///   type TEXT               types the rest of the line
///   drop FILE               drops a file on the window
///   key NAME                SDL's name with Ctrl+, Shift+, Alt+ before it: Ctrl+Shift+Z
///   screenshot FILE         PNG or, by its ending, JPEG
///   places FILE             a line for each target: its name, left, top, right, bottom
///   random SEED COUNT       COUNT random events of mouse and keyboard
///   picture FILE            the scene's picture as PNG, as the player drew it
///   report                  prints times and counts, or why the scene cannot be played
/// TARGET is a name that panels mark, in quotes if it has spaces. The events go to the middle of the target, or with
/// @X,Y after the name, to the place at these shares of its width and height, 0 to 1. # begins a comment.
/// Each frame of the window lasts 1/60 s of script time, however long it takes, so that a script gives the same result
/// on any machine under any load.
struct Script {
    struct Line {
        int number;
        std::vector<std::string> words;
        std::string rest;  // the text after the first word
    };
    std::string file;
    double frame_seconds = 0;                   // script time of a frame of the window; 0: real time
    int width = 0, height = 0;                  // of the window at opening; 0: not given
    std::deque<Line> lines;                     // remaining lines
    std::deque<std::vector<SDL_Event>> events;  // remaining events of the current line, grouped by frame
    int frames_to_wait = 0;
    std::string screenshot;  // file for the next drawn frame; empty: none
    bool is_running = false;
    std::chrono::steady_clock::time_point line_start;
};

stage::Result<Script> read_script(const std::string& file);

/// The scene's time for the next frame of the window, in seconds. Only for `frame_seconds` above 0.
double scene_seconds(const Script& script);

struct ScriptedWindow {
    Window& window;
    Studio& studio;
    const Targets& targets;
};

/// Continues the script. Call it after each frame of the window. Quits the studio at the script's end. Error,
/// "file:line: …": an unknown command, a target that does not appear within five minutes, a file that cannot be
/// written.
stage::Result<stage::Done> continue_script(Script& script, const ScriptedWindow& scripted);

}  // namespace tovu
