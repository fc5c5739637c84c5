// The angles that a wind image can hold, as a table: a channel has 256 values, so no particle needs trigonometry.
#pragma once

#include "../math/matrix.h"

namespace tovu {

/// Cosine and sine of the 256 angles that a channel of a wind image can stand for: byte / 255 of a full turn.
struct WindAngles {
    Turn turns[256];
};
void fill_wind_angles(WindAngles& angles);

}  // namespace tovu
