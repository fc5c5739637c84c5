// The values of a step that are the same for all particles. They are computed once, before the walk.
#pragma once

#include "../instance/smoke_instance.h"
#include "../sources/wind_field.h"

namespace tovu {

struct StepValues {
    float time_step;       // seconds
    Vector3 wind_step;     // units per frame, added to the position; 0 with a wind image
    bool wind_active;      // there is wind, from the parameters or from an image
    bool wind_from_image;  // the wind depends on the particle's position
    float gravity_step;    // units per frame, added to velocity.y
    bool gravity_active;
    float drag;               // velocity factor per frame; exactly 1 means none
    Vector3 turbulence;       // units per frame: width of the range of random displacements, centred on 0
    Vector3 half_turbulence;  // units per frame
    bool turbulent_x;         // a random number is drawn for this axis
    bool turbulent_y;
    bool turbulent_z;
    bool consumer;       // a consumer is attached: only claimed and released particles move
    bool store_alpha;    // into the record; the vertex-array path reads the tables itself
    bool store_color;    // likewise, unless the consumer owns the colour
    bool follow_path;    // path_angle follows the direction of motion
    bool path_in_world;  // rotation_scale_matrix is applied to the direction of motion first
    bool accelerate;     // Death Acceleration is below 100
    float life_factor;   // the share of the remaining life that Death Acceleration leaves
    SpawnType spawn_type;
    WindImage wind_image;  // opened only if wind_from_image
    InsideTest inside;     // opened only for Death Acceleration and Spawn Type Container
    ImageReader mask;      // opened only for Death Acceleration and Spawn Type Image
};

inline bool is_turbulent(const StepValues& values) {
    return values.turbulent_x || values.turbulent_y || values.turbulent_z;
}

/// Fills `values` for the instance's time step and opens the sources that a particle can need.
/// spare_angles: used when the instance has no caches; must live as long as `values`.
void set_step_values(StepValues& values, SmokeInstance& instance, WindAngles& spare_angles);

/// Updates what a request to a spawn plug-in can change during the walk: the address of the wind image's pixels and the
/// attachment of a consumer.
void update_after_request(StepValues& values, const SmokeInstance& instance);

/// The wind that the parameters set without an image, units per second. Under Reference World the container's scale
/// applies.
Vector3 global_wind(const SmokeInstance& instance);

}  // namespace tovu
