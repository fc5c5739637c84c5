// What the bytes of a wind image stand for, as a table: a channel has 256 values, so no particle needs trigonometry.
#pragma once

#include "../math/float4.h"

namespace tovu {

/// Of each value of a byte: 1, cosine and sine of byte / 255 of a full turn, and byte / 255.
struct WindAngles {
    Float4 of_byte[256];
};
void fill_wind_angles(WindAngles& angles);

}  // namespace tovu
