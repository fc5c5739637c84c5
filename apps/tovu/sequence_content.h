// What the pictures of a render depend on.
#pragma once

#include <string>

#include "output_plan.h"
#include "render_command.h"
#include "stage/output/picture_sequence.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// Everything that the pixels of a scene's frames depend on: program, plug-ins, renderer, the files of the scene and
/// the options. Call after the scene is built, since it lists the loaded plug-ins. scene: with the changes of the
/// command line. renderer: the name that OpenGL reports.
stage::SequenceContent scene_content(const stage::SceneDescription& scene, const RenderOptions& options,
                                     const std::string& renderer);

/// Adds the file names and the format of the output to the content of its scene.
stage::SequenceContent sequence_content(stage::SequenceContent scene, const OutputPlan& output);

}  // namespace tovu
