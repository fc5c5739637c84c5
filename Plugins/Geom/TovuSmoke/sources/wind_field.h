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
    float force;    // of a pixel whose first channel is full
    Vector3 scale;  // the container's scaling under Reference World, else 1
};

/// The wind of an image: strength from the first channel, the turns about x and z from the second and third. Positions
/// are the particles' own; beyond the rectangle the nearest edge holds. An image that is gone gives no wind.
inline Vector3 image_wind(const WindImage& wind, float x, float y) {
    const PixelBytes pixel = sample3(wind.reader, x, y);
    const float strength = static_cast<float>(pixel.channel[0] / 255.0) * wind.force;
    const Turn about_x = wind.angles->turns[pixel.channel[1]];
    const Turn about_z = wind.angles->turns[pixel.channel[2]];
    const Vector3 along{about_z.cosine, about_x.cosine * about_z.sine, about_x.sine * about_z.sine};
    return {along.x * strength * wind.scale.x, along.y * strength * wind.scale.y, along.z * strength * wind.scale.z};
}

}  // namespace tovu
