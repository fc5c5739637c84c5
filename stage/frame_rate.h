// Frame rates as people write them.
#pragma once

#include "stage/stage_export.h"

namespace stage {

/// The exact value of a written rate. Television rates of 1000/1001 of a whole number are written rounded: 29.97 means
/// 30000/1001, 59.94 means 60000/1001. Any other rate is exact as written.
STAGE_EXPORT double exact_frame_rate(double written);

}  // namespace stage
