// The wind at a point, in units per second.
#pragma once

#include "../math/float4.h"
#include "../math/vector.h"
#include "image_source.h"

namespace tovu {

/// The wind without an image: `force` along +x, turned about z by `rot_z`, then about x by `rot_x` (degrees), then
/// scaled component by component.
Vector3 wind_field(float force, float rot_x, float rot_z, Vector3 scale);

/// Per byte value: 1, the cosine and the sine of byte / 255 of a full turn, and byte / 255. A channel has 256 values,
/// so a lookup replaces the trigonometry per particle.
struct WindAngles {
    Float4 of_byte[256];
};
void fill_wind_angles(WindAngles& angles);

/// The inputs of an image's wind besides the pixel. They are the same for all particles of a step.
struct WindImage {
    ImageReader reader;
    const WindAngles* angles;
    float force;   // of a pixel whose first channel is 255
    Float4 scale;  // x, y, z; lane 3 is not used
};

/// Lanes 1, 2, 2, 2 of an entry of WindAngles: its cosine, and its sine three times.
inline Float4 cosine_sine_sine(Float4 angle) {
    const Int4 bits = reinterpret_cast<Int4>(angle);
    return reinterpret_cast<Float4>(__builtin_shufflevector(bits, bits, 1, 2, 2, 2));
}

/// The wind at an image's pixel in lanes 0 to 2; lane 3 is not used. Force from the first channel, rotation about x and
/// z from the second and third. 0 when the offset lies outside the pixel data.
inline Float4 wind_field(const WindImage& wind, uint64_t pixel_offset) {
    const PixelBytes pixel = pixel_bytes(wind.reader, pixel_offset);
    const Float4* const of_byte = wind.angles->of_byte;
    const Float4 along = cosine_sine_sine(of_byte[pixel.channel[2]]) * of_byte[pixel.channel[1]];
    return along * (broadcast_lane<3>(of_byte[pixel.channel[0]]) * broadcast(wind.force)) * wind.scale;
}

}  // namespace tovu
