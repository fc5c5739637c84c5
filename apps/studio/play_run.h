// A scene as the studio plays it: built, run frame by frame and drawn. Belongs to one thread.
#pragma once

#include <deque>
#include <memory>
#include <optional>

#include "particle_walk.h"
#include "scene_facts.h"
#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_run.h"

namespace tovu {

/// How the picture differs from the one that the scene describes.
struct ViewOrders {
    std::optional<stage::Camera> camera;  // replaces the scene's
    bool forces = false;                  // plug-ins draw their aids for the designer
    bool on_air = false;                  // plug-ins are told that the picture goes out live
    bool boxes = false;                   // report bounding boxes

    friend bool operator==(const ViewOrders& a, const ViewOrders& b);
};

struct BirthRecord {
    std::deque<int32_t> births;  // of each frame of the last second
    double sum = 0;
};

struct PlayRun {
    stage::SceneRun run;
    std::shared_ptr<const SceneFacts> facts;
    std::vector<std::optional<ParticlePlaces>> places;  // by index of the description's containers
    std::vector<BirthRecord> births;                    // likewise
    std::shared_ptr<FrameNumbers> numbers;  // of the last frame; the Stage's profile adds to them until its end
};

/// Builds the scene and finds what would surprise in it. The error has a line for each mistake.
stage::Result<PlayRun> make_play_run(const stage::SceneDescription& scene, const std::string& smoke_plugin,
                                     int64_t scene_number);

/// The frame that was run last; below 0 before the first picture.
int64_t current_frame(const PlayRun& play);

/// Runs one frame without drawing.
stage::Result<stage::Done> run_next_frame(PlayRun& play);

/// Presses a button of the container's plug-in. The facts become new ones, with the values that the press changed.
stage::Result<stage::Done> press_in_run(PlayRun& play, const std::string& container, const std::string& button);

/// Draws the frame that was run last and collects its numbers.
stage::Result<DrawnFrame> draw_run(PlayRun& play, stage::SceneCanvas& canvas, const ViewOrders& view);

}  // namespace tovu
