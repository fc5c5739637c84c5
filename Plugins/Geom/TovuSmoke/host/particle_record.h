/* Shared by hosts and plug-ins: the record of one particle, as consumer plug-ins read and write it. C11 and C++. */
#ifndef TOVU_HOST_PARTICLE_RECORD_H
#define TOVU_HOST_PARTICLE_RECORD_H

#include <stddef.h>
#include <stdint.h>

#include "vector3.h"

/**
 * One particle. The smoke owns all records: only the smoke allocates, links and frees them. Field order and types are a
 * fixed interface between separately built plug-ins; the offsets in brackets apply to 4-byte pointers.
 * A consumer may read all fields and write all except `next` and `prev`, on the host's thread, between the smoke's
 * calls. Keep 0 <= `age` <= `life`: colour and opacity are looked up at age / life. Before the first birth of a record
 * only `position`, `velocity` and the fields from `accelerated` on are set, to 0.
 */
typedef struct Particle {
    Vector3 position;    /**< [0] container units under the smoke's Reference Local, world units under World */
    Vector3 velocity;    /**< [12] displacement per frame, added to `position` once a frame */
    uint8_t color[3];    /**< [24] red, green, blue, 0 to 255; not updated while Use Array is on */
    float alpha;         /**< [28] opacity, 0 to 255; not updated while Use Array is on */
    float size_x;        /**< [32] half the quad's width, in the units of `position` */
    float size_step_x;   /**< [36] added to `size_x` once a frame */
    float size_y;        /**< [40] half the quad's height */
    float size_step_y;   /**< [44] added to `size_y` once a frame */
    float rotation;      /**< [48] rotation of the quad about its own Z, degrees */
    float rotation_step; /**< [52] added to `rotation` once a frame, degrees */
    float path_angle; /**< [56] further rotation along the direction of motion, degrees; 0 with Rot Follow Path off */
    float age;        /**< [60] seconds since birth */
    float life;       /**< [64] lifetime, seconds; the particle dies in the first frame in which `age` exceeds it */
    int32_t accelerated;   /**< [68] 1 after Death Acceleration has shortened this particle's life, else 0 */
    int32_t reserved;      /**< [72] 0 in a new record; not used */
    struct Particle* next; /**< [76] next record of the same list, null at the tail */
    struct Particle* prev; /**< [80] previous record of the same list, null at the head */
    int32_t claimed;       /**< [84] nonzero while the consumer controls the particle; only the consumer sets it, to
                                any value; the smoke clears it at birth and at a detach */
    uint8_t released;      /**< [88] nonzero after the consumer has handed the particle back; only the consumer
                                sets it; the smoke clears it at birth */
} Particle;

#endif
