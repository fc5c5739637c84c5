// Where to look at smoke from, measured in small pictures of it.
#pragma once

#include <string>

#include "document/document.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// The pre-warming after which the scene shows about as much as it ever does in its first 12 seconds, and the camera
/// from which all but faint edges of that fill two thirds of a picture of 16:9. Of the scene's camera and pre-warming
/// nothing counts. Draws up to some twenty small pictures in a context of its own: takes some tenths of a second.
/// Error: it cannot be built or drawn, or shows nothing.
stage::Result<Framing> measure_framing(const stage::SceneDescription& scene, const std::string& smoke_plugin);

}  // namespace tovu
