#include "wind_field.h"

#include "../math/matrix.h"
#include "../math/trigonometry.h"

namespace tovu {

Vector3 wind_field(float force, float rot_x, float rot_z, Vector3 scale) {
    Matrix4 direction;
    rotate_x(direction, rot_x);
    rotate_z(direction, rot_z);
    return scaled(transform(direction, {force, 0, 0}), scale);
}

void fill_wind_angles(WindAngles& angles) {
    for (int32_t byte = 0; byte < 256; ++byte) {
        const auto channel = static_cast<float>(byte / 255.0);
        const SineCosine turn = sine_cosine_degrees(channel * 360.0f);
        angles.of_byte[byte] = Float4{1.0f, turn.cosine, turn.sine, channel};
    }
}

}  // namespace tovu
