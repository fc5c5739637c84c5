// Parameter values from the command line.
#pragma once

#include <string>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Appends the assignment "container.parameter=value" to the settings of the container, where it overrides earlier
/// ones. For a container with a look it is appended to the settings of its layers; a single layer is named
/// CONTAINER.LAYER. The value is read as in a scene file. A value that is not a number, true, false or a quoted text is
/// a plain text. Errors: another form of assignment, a container that does not exist or has no plug-in, a parameter
/// with a track.
STAGE_EXPORT Result<Done> override_parameter(SceneDescription& scene, const std::string& assignment);

}  // namespace stage
