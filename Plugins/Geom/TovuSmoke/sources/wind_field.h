// The wind that blows at a point, in units per second.
#pragma once

#include "../smoke_instance.h"
#include "image_source.h"
#include "wind_angles.h"

namespace tovu {

/// The global wind: `wind_force` along +x, turned about z by `wind_rot_z`, then about x by `wind_rot_x`; under
/// Reference World times the container's scaling.
Vector3 global_wind(const SmokeInstance& instance);

/// What the wind of an image is made with, the same for all particles of a step.
struct WindImage {
    ImageReader reader;
    const WindAngles* angles;
    float force;   // of a pixel whose first channel is full
    Float4 scale;  // the container's scaling under Reference World, else 1; the fourth means nothing
};

/// The second, the third, the third again.
inline Float4 cosine_sine_sine(Float4 turn) {
    const Int4 bits = reinterpret_cast<Int4>(turn);
    return reinterpret_cast<Float4>(__builtin_shufflevector(bits, bits, 1, 2, 2, 2));
}

/// The wind of an image's pixel: strength from the first channel, the turns about x and z from the second and third;
/// x, y, z, and a fourth that means nothing. No wind where the image has no such pixel.
inline Float4 pixel_wind(const WindImage& wind, uint64_t pixel_offset) {
    const PixelBytes pixel = pixel_bytes(wind.reader, pixel_offset);
    const Float4* const of_byte = wind.angles->of_byte;
    const Float4 along = cosine_sine_sine(of_byte[pixel.channel[2]]) * of_byte[pixel.channel[1]];
    return along * (broadcast_lane<3>(of_byte[pixel.channel[0]]) * broadcast(wind.force)) * wind.scale;
}

}  // namespace tovu
