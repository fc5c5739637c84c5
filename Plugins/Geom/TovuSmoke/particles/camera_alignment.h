// The rotation that makes a quad that faces +Z face the render camera.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Sets billboard_axis, billboard_tilt and billboard_roll from the host's render camera.
void align_to_camera(SmokeInstance& instance);

}  // namespace tovu
