/* Offsets of everything that plug-ins built apart share: with 4-byte pointers and with 8-byte ones. C11 and C++. */
#include <assert.h>
#include <stddef.h>
#include <tovu/exchange.h>
#include <tovu/host_services.h>
#include <tovu/particle_record.h>
#include <tovu/spawn_requests.h>
#include <tovu/vector3.h>

#define WIDE (sizeof(void*) == 8)
#define AT(type, field, narrow, wide) \
    static_assert(offsetof(type, field) == (WIDE ? (wide) : (narrow)), #type "." #field)
#define SIZE(type, narrow, wide) static_assert(sizeof(type) == (WIDE ? (wide) : (narrow)), #type)

AT(Vector3, x, 0, 0);
AT(Vector3, y, 4, 4);
AT(Vector3, z, 8, 8);
SIZE(Vector3, 12, 12);

AT(Particle, position, 0, 0);
AT(Particle, velocity, 12, 12);
AT(Particle, color, 24, 24);
AT(Particle, alpha, 28, 28);
AT(Particle, size_x, 32, 32);
AT(Particle, size_step_x, 36, 36);
AT(Particle, size_y, 40, 40);
AT(Particle, size_step_y, 44, 44);
AT(Particle, rotation, 48, 48);
AT(Particle, rotation_step, 52, 52);
AT(Particle, path_angle, 56, 56);
AT(Particle, age, 60, 60);
AT(Particle, life, 64, 64);
AT(Particle, accelerated, 68, 68);
AT(Particle, reserved, 72, 72);
AT(Particle, next, 76, 80);
AT(Particle, prev, 80, 88);
AT(Particle, claimed, 84, 96);
AT(Particle, released, 88, 100);
SIZE(Particle, 92, 104);

AT(ParticleAttachRequest, birth_limit, 0, 0);
AT(ParticleAttachRequest, death_acceleration, 4, 4);
AT(ParticleAttachRequest, owns_colour, 8, 8);
SIZE(ParticleAttachRequest, 12, 12);

AT(ParticleExchangeBlock, active_head, 0, 0);
AT(ParticleExchangeBlock, inactive_head, 4, 8);
AT(ParticleExchangeBlock, deleted_head, 8, 16);
AT(ParticleExchangeBlock, particle_count, 12, 24);
AT(ParticleExchangeBlock, reserved, 16, 28);
SIZE(ParticleExchangeBlock, 20, 32);

/* A request's code is four characters, the first in the top byte. */
#define CODE(a, b, c, d) ((a) << 24 | (b) << 16 | (c) << 8 | (d))
static_assert(TOVU_REQUEST_ATTACH == CODE('R', 'A', 'D', '1'), "attach");
static_assert(TOVU_REQUEST_DETACH == CODE('R', 'A', 'D', '2'), "detach");
static_assert(TOVU_REQUEST_SUPPLIES_SPAWN_POINTS == CODE('S', 'P', 'W', 'N'), "supplies spawn points");
static_assert(TOVU_REQUEST_NEW_SPAWN_POINT == CODE('N', 'E', 'W', 'P'), "new spawn point");
static_assert(TOVU_REQUEST_IS_INSIDE == CODE('I', 'S', 'I', 'N'), "is inside");
static_assert(TOVU_OBJECT_CONTAINER == 2 && TOVU_OBJECT_GEOMETRY == 50 && TOVU_OBJECT_CAMERA == 62, "object kinds");
