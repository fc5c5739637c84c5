// Builds a scene for the studio, runs it frame by frame and draws it. For use in one thread.
#pragma once

#include <deque>
#include <memory>
#include <optional>

#include "particle_walk.h"
#include "scene_facts.h"
#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_run.h"

namespace tovu {

/// Settings of the view that are not in the scene.
struct ViewOrders {
    std::optional<stage::Camera> camera;  // replaces the scene's camera
    bool forces = false;                  // plug-ins draw their design aids
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
    std::vector<BirthRecord> births;                    // by index of the description's containers
    std::shared_ptr<FrameNumbers> numbers;  // of the latest frame; the Stage's profile adds to them during the frame
};

/// Builds the scene and collects warnings. The error has a line for each mistake.
stage::Result<PlayRun> make_play_run(const stage::SceneDescription& scene, const std::string& smoke_plugin,
                                     int64_t scene_number);

/// The number of the latest frame; below 0 before frame 0.
int64_t current_frame(const PlayRun& play);

/// Runs one frame without drawing.
stage::Result<stage::Done> run_next_frame(PlayRun& play);

/// Presses a button of the container's plug-in. Replaces the facts, since the press may change values.
stage::Result<stage::Done> press_in_run(PlayRun& play, const std::string& container, const std::string& button);

/// Draws the latest frame and collects its numbers.
stage::Result<DrawnFrame> draw_run(PlayRun& play, stage::SceneCanvas& canvas, const ViewOrders& view);

}  // namespace tovu
