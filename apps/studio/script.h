// Scripts: files of events for tests and for the pictures in documents. The events go through SDL's queue, like those
// of a person.
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
///   time real               before other lines but size: the clock is that of the machine, for measuring
///   size WIDTH HEIGHT       of the window; before other lines, the one that it opens with
///   wait picture            until the newest scene is drawn and no seek is under way
///   wait export             until the export has ended; meanwhile no time passes for the scene
///   wait frames N           of the window, 1/60 s each
///   wait TARGET             until it is in the window
///   click TARGET [double|right|ctrl]
///   drag TARGET DX DY [shift|alt]   pixels, in ten steps
///   wheel TARGET STEPS
///   type TEXT               to the end of the line
///   drop FILE               on the window
///   key NAME                SDL's name with Ctrl+, Shift+, Alt+ before it: Ctrl+Shift+Z
///   screenshot FILE         PNG or, by its ending, JPEG
///   places FILE             a line for each target: its name, left, top, right, bottom
///   random SEED COUNT       that many events of the mouse and the keyboard
///   picture FILE            the scene's picture as PNG, as the player drew it
///   report                  prints times and counts, or why the scene cannot be played
/// TARGET is a name that panels mark, in quotes where it has spaces; it means the middle, or with @X,Y behind the name
/// the place at these shares of width and height, 0 to 1. # begins a comment.
/// Time passes by 1/60 s in each frame of the window, however long the frame takes: what a script does is the same on
/// any machine under any load.
struct Script {
    struct Line {
        int number;
        std::vector<std::string> words;
        std::string rest;  // behind the first word
    };
    std::string file;
    double frame_seconds = 0;                   // that each frame of the window takes; 0: the time that it took
    int width = 0, height = 0;                  // to open with; 0: not given
    std::deque<Line> lines;                     // to come
    std::deque<std::vector<SDL_Event>> events;  // to come, for one frame each
    int frames_to_wait = 0;
    std::string screenshot;  // to write once the frame is drawn; empty: none
    bool is_running = false;
    std::chrono::steady_clock::time_point line_start;
};

stage::Result<Script> read_script(const std::string& file);

/// Seconds that the next frame of the window takes for the scene, when `frame_seconds` is above 0.
double scene_seconds(const Script& script);

struct ScriptedWindow {
    Window& window;
    Studio& studio;
    const Targets& targets;
};

/// Call after each frame of the window. At the script's end the studio is told to quit. Error, "file:line: …": an
/// unknown command, a target that does not come within five minutes, a file that cannot be written.
stage::Result<stage::Done> continue_script(Script& script, const ScriptedWindow& scripted);

}  // namespace tovu
