// Where the time of a render goes.
#pragma once

#include <chrono>
#include <string>

namespace tovu {

/// Seconds of a render, after the scene was loaded.
struct RenderTimes {
    double simulate = 0.0;
    double draw = 0.0;
    double read = 0.0;   // from the renderer's frame to a picture
    double wait = 0.0;   // until the thread that writes takes the next picture, and at the end until all are written
    double write = 0.0;  // on that thread: encode pictures and write them, or pass them to an encoder
    int frames = 0;      // that were drawn
};

/// Calls `work` and adds its duration to `seconds`.
template <class Work>
auto timed(double& seconds, const Work& work) {
    struct Add {
        double& seconds;
        std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
        ~Add() { seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }
    } add{seconds};
    return work();
}

/// A table with a line for each kind of work: seconds, milliseconds a frame, share of the whole. Ends with a newline.
std::string times_text(const RenderTimes& times);

}  // namespace tovu
