/* Shared by hosts and plug-ins: how a consumer plug-in attaches to the live particles of a smoke. C11 and C++. */
#ifndef TOVU_HOST_EXCHANGE_H
#define TOVU_HOST_EXCHANGE_H

#include <stdint.h>

#include "particle_record.h"

/**
 * Attach to a smoke, or refresh an attachment. Sent to the smoke's geometry through `_api__geom_dispatcher`; data: a
 * `ParticleAttachRequest`, reply: the address of a `ParticleExchangeBlock *` that the smoke sets. Ignored without either.
 */
#define TOVU_REQUEST_ATTACH ((int32_t)0x52414431) /* 'RAD1' */

/**
 * Detach: every particle returns to the pool, every `claimed` is cleared, the records kept for the consumer are freed.
 * data: not read; reply: the address of a `ParticleExchangeBlock *` that the smoke sets to null (may be null itself).
 */
#define TOVU_REQUEST_DETACH ((int32_t)0x52414432) /* 'RAD2' */

/** What a consumer asks for. Read during the attach request only. */
typedef struct ParticleAttachRequest {
    int32_t birth_limit;      /**< [0] most births in one frame while attached; 0 or less: none */
    float death_acceleration; /**< [4] 0 to 100, percent of the remaining life that a released particle keeps; written
                                   into the smoke's own parameter, where it stays after the detach */
    uint8_t owns_colour;      /**< [8] nonzero: the consumer writes `Particle::color`, the smoke only `alpha` */
} ParticleAttachRequest;

/**
 * What the smoke hands out. It lies inside the smoke's instance: valid until the smoke's container or geometry goes
 * away, which is not announced, so test the smoke's handle with `_api__object_valid` before each use.
 */
typedef struct ParticleExchangeBlock {
    Particle **active_head;   /**< address of the head of the live particles, youngest first */
    Particle **inactive_head; /**< address of the head of the pooled records */
    Particle *deleted_head;   /**< head of the records that left the pool while claimed, as of the attach request */
    int32_t particle_count;   /**< size of the pool as of the attach request */
    float reserved;           /**< 0 */
} ParticleExchangeBlock;

#endif
