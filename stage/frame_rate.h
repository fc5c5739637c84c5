// Frame rates as people write them.
#pragma once

#include "stage/stage_export.h"

namespace stage {

/// Frames per second that a written rate stands for. Television has rates of 1000/1001 of a whole number, which are
/// written rounded: 29.97 is 30000/1001, 59.94 is 60000/1001. Every other rate is what is written.
STAGE_EXPORT double exact_frame_rate(double written);

}  // namespace stage
