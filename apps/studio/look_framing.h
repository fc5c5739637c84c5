// Chooses the camera and pre-warming for smoke by measuring small pictures.
#pragma once

#include <string>

#include "document/document.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// Returns the pre-warming after which the smoke stops growing, within its first 12 seconds, and the camera from which
/// the smoke, without faint edges, fills two thirds of a 16:9 picture. Ignores the scene's own camera and pre-warming.
/// Draws up to about twenty small pictures in a separate OpenGL context, which takes some tenths of a second.
/// Error: the scene cannot be built or drawn, or shows nothing.
stage::Result<Framing> measure_framing(const stage::SceneDescription& scene, const std::string& smoke_plugin);

}  // namespace tovu
