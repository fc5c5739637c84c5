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

/// All state of one smoke. The host allocates the block, fills the parameter slots and frees the block; the plug-in
/// builds the fields after the slots in place. Order and types of the fields are fixed.
struct SmokeInstance {
    ParameterSlots parameters;

    int32_t array_warmup_frames = 10;  // remaining passes that enable the client arrays even with Use Array off

    Particle* active_head = nullptr;    // live particles, youngest first
    Particle* inactive_head = nullptr;  // pooled records, most recently pooled first
    Particle* deleted_head = nullptr;   // records that left the pool while a consumer may still use them
    uint8_t consumer_attached = 0;
    uint8_t consumer_owns_colour = 0;
    uint8_t step_under_way = 0;        // private, in alignment padding: rebuild_frame is running
    int32_t consumer_birth_limit = 0;  // read only while a consumer is attached
    ParticleExchangeBlock exchange_block{};

    int32_t geom_handle = -1;       // this instance's geometry
    int32_t container_handle = -1;  // the container that carries it

    int32_t particle_count = 0;   // records on the active and the inactive list
    float birth_accumulator = 0;  // seconds not yet turned into births
    double time_step = 0;         // seconds of the current step
    float last_post_time = -1;    // seconds on the post-recording clock; negative: not read yet
    int32_t last_retrace = 0;

    Vector3 emission_vector{};  // central direction of emission times the speed
    Vector3 abs_position{};     // world units
    Vector3 abs_rotation{};     // degrees
    Vector3 abs_scale{1, 1, 1};

    DrawMode draw_mode = kDrawLocalFlat;
    Vector3 billboard_axis{};  // a quad that faces +Z is rotated about this axis …
    Matrix4 billboard_matrix;
    float billboard_tilt = 0;       // … by this angle, degrees,
    float billboard_roll = 0;       // then about its own Z, degrees, to face the camera upright
    Matrix4 rotation_scale_matrix;  // rotation and scaling of the carrying container
    Matrix4 transformation_matrix;  // of the carrying container, from the host

    ColorTable color_table{};
    AlphaTable alpha_table{};

    Matrix4 quad_matrix;              // corner transform of the quad being built
    float transformation_copy[16]{};  // transformation_matrix as of the last step
    float* vertex_cursor = nullptr;   // next float to write in the shared vertex array
    Vector3 quad_corners[4]{};        // corner offsets: top left, top right, bottom left, bottom right
    int32_t draw_count = 0;           // draw-list entries of the current pass

    ContainerSpawnSource container_source;
    char saved_container_name[1000]{};  // the name that container_source was last built from
    ImageSource wind_source;
    char saved_wind_image_name[1000]{};
    ImageSource spawn_image_source;
    char saved_spawn_image_name[1000]{};

    InstanceCaches* caches = nullptr;  // private, in the rest of the block; null when there was no memory
};

constexpr int32_t kInstanceBytes = 9096;  // registered with the host, the same on every platform
static_assert(sizeof(SmokeInstance) <= kInstanceBytes, "the fields no longer fit the block, whose size is fixed");
static_assert(alignof(SmokeInstance) <= 8, "hosts align the block to 8 bytes");

// The layout with 4-byte and with 8-byte pointers, side by side. Some 32-bit platforms align a double to 4, others to
// 8: fields from time_step on move by kDoublePadding.
constexpr size_t kDoublePadding = alignof(SmokeInstance) == 8 ? 4 : 0;
constexpr size_t offset(size_t with_4_byte_pointers, size_t with_8_byte_pointers) {
    return sizeof(void*) == 4 ? with_4_byte_pointers : with_8_byte_pointers;
}
#define TOVU_LAYOUT(field, offset_32, offset_64)                                  \
    static_assert(offsetof(SmokeInstance, field) == offset(offset_32, offset_64), \
                  #field " is not where hosts expect it")
TOVU_LAYOUT(array_warmup_frames, 240, 240);
TOVU_LAYOUT(active_head, 244, 248);
TOVU_LAYOUT(consumer_attached, 256, 272);
TOVU_LAYOUT(consumer_birth_limit, 260, 276);
TOVU_LAYOUT(exchange_block, 264, 280);
TOVU_LAYOUT(geom_handle, 284, 312);
TOVU_LAYOUT(birth_accumulator, 296, 324);
TOVU_LAYOUT(time_step, 300 + kDoublePadding, 328);
TOVU_LAYOUT(draw_mode, 364 + kDoublePadding, 392);
TOVU_LAYOUT(color_table, 580 + kDoublePadding, 608);
TOVU_LAYOUT(quad_matrix, 5708 + kDoublePadding, 5736);
TOVU_LAYOUT(container_source, 5892 + kDoublePadding, 5928);
TOVU_LAYOUT(wind_source, 6960 + kDoublePadding, 7016);
TOVU_LAYOUT(spawn_image_source, 7996 + kDoublePadding, 8052);
TOVU_LAYOUT(caches, 9032 + kDoublePadding, 9088);
#undef TOVU_LAYOUT

}  // namespace tovu
