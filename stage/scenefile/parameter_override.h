// Parameter values from the command line.
#pragma once

#include <string>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Appends "container.parameter=value" to the container's settings, where it overrides earlier ones; with a look, to
/// those of its layers, whose own names are CONTAINER.LAYER. The value is read
/// as in a scene file; what is no number, true, false or quoted text counts as plain text. Error: an assignment of
/// another form, a container that does not exist or carries no plug-in, or a parameter that a track moves.
STAGE_EXPORT Result<Done> override_parameter(SceneDescription& scene, const std::string& assignment);

}  // namespace stage
