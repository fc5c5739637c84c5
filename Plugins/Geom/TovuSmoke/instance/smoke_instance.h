// The block that the host keeps for each container that carries a smoke.
#pragma once

#include <cstddef>
#include <cstdint>

#include "../host/exchange.h"
#include "../host/particle_record.h"
#include "../math/matrix.h"
#include "../math/vector.h"
#include "../sources/container_source.h"
#include "../sources/image_source.h"
#include "draw_mode.h"
#include "life_tables.h"
#include "parameters.h"

namespace tovu {

struct InstanceCaches;

/// All state of one smoke. The host allocates it, fills the parameter slots and frees it; the fields behind the slots
/// are built in place. Order and types are fixed.
struct SmokeInstance {
    ParameterSlots parameters;

    int32_t array_warmup_frames = 10;  // passes that still enable the client arrays although Use Array is off

    Particle* active_head = nullptr;    // live particles, youngest first
    Particle* inactive_head = nullptr;  // pooled records, the one that joined last first
    Particle* deleted_head = nullptr;   // records that left the pool while a consumer may hold them
    uint8_t consumer_attached = 0;
    uint8_t consumer_owns_colour = 0;
    uint8_t step_under_way = 0;        // this plug-in's own, in what alignment leaves free: rebuild_frame is running
    int32_t consumer_birth_limit = 0;  // read only while a consumer is attached
    ParticleExchangeBlock exchange_block{};

    int32_t geom_handle = -1;       // this instance's geometry
    int32_t container_handle = -1;  // the container that carries it

    int32_t particle_count = 0;   // records on the active and the inactive list
    float birth_accumulator = 0;  // seconds not yet turned into births
    double time_step = 0;         // seconds of the current step
    float last_post_time = -1;    // seconds on the post-recording clock; negative: none seen yet
    int32_t last_retrace = 0;

    Vector3 emission_vector{};  // central direction of emission times the speed
    Vector3 abs_position{};     // world units
    Vector3 abs_rotation{};     // degrees
    Vector3 abs_scale{1, 1, 1};

    DrawMode draw_mode = kDrawLocalFlat;
    Vector3 billboard_axis{};  // turns a quad that faces +Z toward the camera …
    Matrix4 billboard_matrix;
    float billboard_tilt = 0;       // … by this angle, degrees
    float billboard_roll = 0;       // then in the screen's plane, degrees
    Matrix4 rotation_scale_matrix;  // of the carrying container, without its translation
    Matrix4 transformation_matrix;  // of the carrying container, as the host gives it

    ColorTable color_table{};
    AlphaTable alpha_table{};

    Matrix4 quad_matrix;              // corner transform of the quad being built
    float transformation_copy[16]{};  // transformation_matrix as the step found it
    float* vertex_cursor = nullptr;   // next float to write in the shared vertex array
    Vector3 quad_corners[4]{};        // corner offsets: top left, top right, bottom left, bottom right
    int32_t draw_count = 0;           // draw-list entries of the current pass

    ContainerSpawnSource container_source;
    char saved_container_name[1000]{};  // what container_source was last built from
    ImageSource wind_source;
    char saved_wind_image_name[1000]{};
    ImageSource spawn_image_source;
    char saved_spawn_image_name[1000]{};

    InstanceCaches* caches = nullptr;  // this plug-in's own, in what is left of the block; null where memory ran out
};

constexpr int32_t kInstanceBytes = 9096;  // registered with the host, the same on every platform
static_assert(sizeof(SmokeInstance) <= kInstanceBytes, "the fields no longer fit the block, whose size is fixed");
static_assert(alignof(SmokeInstance) <= 8, "hosts align the block to 8 bytes");
static_assert(offsetof(SmokeInstance, array_warmup_frames) == 240, "the first field follows the parameter slots");
static_assert(offsetof(SmokeInstance, consumer_birth_limit) == offsetof(SmokeInstance, consumer_attached) + 4,
              "the switches before it take 4 bytes");
static_assert(sizeof(void*) != 8 ||
                  (offsetof(SmokeInstance, active_head) == 248 && offsetof(SmokeInstance, exchange_block) == 280 &&
                   offsetof(SmokeInstance, geom_handle) == 312 && offsetof(SmokeInstance, time_step) == 328 &&
                   offsetof(SmokeInstance, draw_mode) == 392 && offsetof(SmokeInstance, color_table) == 608 &&
                   offsetof(SmokeInstance, quad_matrix) == 5736 && offsetof(SmokeInstance, container_source) == 5928 &&
                   offsetof(SmokeInstance, wind_source) == 7016 &&
                   offsetof(SmokeInstance, spawn_image_source) == 8052 && offsetof(SmokeInstance, caches) == 9088),
              "a field moved in the layout with 8-byte pointers");
// With 4-byte pointers time_step is the one field whose place depends on how the platform aligns a double: to 4 on
// 32-bit x86 Linux, to 8 elsewhere.
constexpr size_t kDoublePadding = alignof(SmokeInstance) == 8 ? 4 : 0;
static_assert(sizeof(void*) != 4 ||
                  (offsetof(SmokeInstance, active_head) == 244 && offsetof(SmokeInstance, exchange_block) == 264 &&
                   offsetof(SmokeInstance, geom_handle) == 284 && offsetof(SmokeInstance, birth_accumulator) == 296 &&
                   offsetof(SmokeInstance, time_step) == 300 + kDoublePadding &&
                   offsetof(SmokeInstance, caches) == 9032 + kDoublePadding),
              "a field moved in the layout with 4-byte pointers");

}  // namespace tovu
