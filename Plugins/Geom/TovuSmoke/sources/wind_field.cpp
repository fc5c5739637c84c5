#include "wind_field.h"

#include "../math/trigonometry.h"

namespace tovu {

Vector3 global_wind(const SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    const float strength = param::wind_force(p);
    Matrix4 direction;
    rotate_x(direction, param::wind_rot_x(p));
    rotate_z(direction, param::wind_rot_z(p));
    const Vector3 wind = transform(direction, {strength, 0, 0});
    return param::reference(p) == kReferenceWorld ? scaled(wind, instance.abs_scale) : wind;
}

void fill_wind_angles(WindAngles& angles) {
    for (int32_t byte = 0; byte < 256; ++byte) {
        const auto channel = static_cast<float>(byte / 255.0);
        const SineCosine turn = sine_cosine_degrees(channel * 360.0f);
        angles.of_byte[byte] = Float4{1.0f, turn.cosine, turn.sine, channel};
    }
}

}  // namespace tovu
