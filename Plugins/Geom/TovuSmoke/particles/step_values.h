// What a step's walk over the particles depends on and no particle changes: worked out once, before it.
#pragma once

#include "../instance/smoke_instance.h"
#include "../sources/wind_field.h"

namespace tovu {

struct StepValues {
    float time_step;    // seconds
    Vector3 wind_step;  // units per frame, added to the position; of an image: not here but per particle
    bool wind_active;
    bool wind_from_image;
    float gravity_step;  // units per frame, added to velocity.y
    bool gravity_active;
    float drag;          // velocity factor per frame; exactly 1 means none
    Vector3 turbulence;  // range of the random displacement, units per frame
    Vector3 half_turbulence;
    bool turbulent_x;
    bool turbulent_y;
    bool turbulent_z;
    bool consumer;     // attached: only claimed or released particles take part
    bool store_alpha;  // the drawing that reads the record needs it; the arrays look the tables up themselves
    bool store_color;
    bool follow_path;
    bool path_in_world;  // the path's direction is seen through rotation_scale_matrix
    bool accelerate;     // Death Acceleration is below 100
    float life_factor;   // share of the remaining life that it leaves
    SpawnType spawn_type;
    WindImage wind_image;
    InsideTest inside;
    ImageReader mask;
};

/// Brings up to date what a request to a spawn plug-in may have changed under the walk: the image's pixels, since the
/// host may have loaded it anew, and the attachment of a consumer.
void update_after_request(StepValues& values, const SmokeInstance& instance);

/// Fills `values` for the instance's time step and opens the sources that a particle can need. `spare_angles` must live
/// as long: it is used where the instance has no place for the table.
void set_step_values(StepValues& values, SmokeInstance& instance, WindAngles& spare_angles);

/// The wind of `wind_force`, without an image, units per second. Under Reference World it is scaled by the container.
Vector3 global_wind(const SmokeInstance& instance);

}  // namespace tovu
