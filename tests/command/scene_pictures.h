// Draws frames of a scene with the built plug-in, for tests that look at pictures.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>

#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_run.h"

struct ScenePictures {
    std::vector<stage::Picture> pictures;
    std::string renderer;  // name of the OpenGL renderer, such as "llvmpipe"
};

/// Draws these frames, in ascending order. The canvas may have drawn other scenes before. A warning or a complaint of
/// the Stage fails the test.
inline ScenePictures draw_frames(stage::SceneCanvas& canvas, const stage::SceneDescription& scene,
                                 const std::vector<int64_t>& frames) {
    auto built = stage::build_scene(scene, TOVU_SMOKE_PLUGIN);
    if (!built) throw std::runtime_error(built.error().message);
    const auto reused = stage::reuse_canvas(canvas, scene);
    if (!reused) throw std::runtime_error(reused.error().message);
    for (const std::string& warning : built->warnings) ADD_FAILURE() << warning;
    stage::SceneRun run = stage::start_run(std::move(*built));
    ScenePictures drawn{{}, canvas.context.description().renderer};
    drawn.renderer = drawn.renderer.substr(0, drawn.renderer.find(" ("));  // without details of its build
    for (const int64_t frame : frames) {
        const auto done = stage::run_until(run, frame);
        EXPECT_TRUE(done) << done.error().message;
        auto picture = stage::draw_scene(canvas, run.built);
        EXPECT_TRUE(picture) << picture.error().message;
        drawn.pictures.push_back(std::move(*picture));
    }
    for (const auto& complaint : run.built.stage->complaints.list) ADD_FAILURE() << to_string(complaint);
    return drawn;
}

inline stage::SceneCanvas canvas_of(const stage::SceneDescription& scene) {
    auto canvas = stage::make_canvas(scene);
    if (!canvas) throw std::runtime_error(canvas.error().message);
    return std::move(*canvas);
}

inline ScenePictures draw_frames(const stage::SceneDescription& scene, const std::vector<int64_t>& frames) {
    stage::SceneCanvas canvas = canvas_of(scene);
    return draw_frames(canvas, scene, frames);
}
