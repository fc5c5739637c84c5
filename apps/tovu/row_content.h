// What the pictures of a render depend on.
#pragma once

#include <string>

#include "output_plan.h"
#include "render_command.h"
#include "stage/output/picture_row.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// Everything that decides the pixels of a scene's frames: program, plug-ins, renderer, the files of the scene and the
/// changes on the command line. Call after the scene was built, since it lists the plug-ins that are loaded.
/// scene: with the command line's changes. renderer: as OpenGL names it.
stage::RowContent scene_content(const stage::SceneDescription& scene, const RenderOptions& options,
                                const std::string& renderer);

/// The same with what the output adds: the names of its pictures and their format.
stage::RowContent row_content(stage::RowContent scene, const OutputPlan& output);

}  // namespace tovu
