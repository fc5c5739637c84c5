// Where the time of a render goes.
#pragma once

#include <chrono>
#include <string>

namespace tovu {

/// Seconds of a render, after the scene was loaded.
struct RenderTimes {
    double simulate = 0.0;
    double draw = 0.0;
    double read = 0.0;   // read a frame back from the renderer, or read a picture file
    double wait = 0.0;   // wait for the writer thread
    double write = 0.0;  // on the writer thread: encode and write pictures, or pass them to an encoder
    int frames = 0;      // drawn
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

/// A table with a line for each kind of work: seconds, milliseconds per frame, share of the total. Ends with a newline.
std::string times_text(const RenderTimes& times);

}  // namespace tovu
