/* Shared by hosts and plug-ins: how a consumer plug-in attaches to the live particles of a smoke. C11 and C++. */
#ifndef TOVU_HOST_EXCHANGE_H
#define TOVU_HOST_EXCHANGE_H

#include <stdint.h>

#include "particle_record.h"

/*
 * A consumer sends both requests to the smoke's geometry through `_api__geom_dispatcher`, from any of its own entry
 * points that are given an instance, and works on the records in those calls only. One consumer at a time: a second one
 * would take over the first one's attachment.
 *
 * While a consumer is attached
 * - at most `birth_limit` particles are born in a frame; what that holds back stays due;
 * - live particles with neither `claimed` nor `released` set stand still, do not age and are not drawn: newborn ones
 *   are such, so look through the live particles every frame;
 * - a released particle has its remaining life cut once to `death_acceleration` percent, except under the smoke's Spawn
 *   Type Image, where being off the mask alone decides;
 * - records that leave the pool because Number of Particles dropped go to the deleted list. There the smoke frees those
 *   with `claimed` 0 in its next frame: clear it on every one that you let go.
 * A particle that dies goes to the pooled records with `claimed` as it was; its next birth clears both flags.
 */

/**
 * Attach to a smoke, or refresh an attachment. data: a `ParticleAttachRequest`; reply: the address of a
 * `ParticleExchangeBlock *` that the smoke sets. Set it to null before: another plug-in leaves it as it was.
 * Ignored where either is missing. May be sent every frame, which brings the snapshots of the block up to date.
 */
#define TOVU_REQUEST_ATTACH INT32_C(0x52414431) /* 'RAD1' */

/**
 * Detach: every live particle vanishes into the pool, every `claimed` is cleared, the deleted list is freed.
 * data: not read; reply: the address of a `ParticleExchangeBlock *` that the smoke sets to null (may be null itself).
 */
#define TOVU_REQUEST_DETACH INT32_C(0x52414432) /* 'RAD2' */

/** What a consumer asks for. The consumer's own, read during the attach request only. */
typedef struct ParticleAttachRequest {
    int32_t birth_limit;      /**< [0] most births in one frame while attached; 0 or less: none */
    float death_acceleration; /**< [4] 0 to 100, percent of the remaining life that a released particle keeps, and,
                                 under Spawn Type Container or Image, any one outside the shape or off the mask. Becomes
                                 the smoke's own Death Acceleration, which keeps it after the detach. 100: no cut */
    uint8_t owns_colour;      /**< [8] nonzero: the consumer writes `Particle::color` and the smoke only `alpha`; has no
                                   effect while the smoke's Use Array is on */
} ParticleAttachRequest;

/**
 * What the smoke hands out; offsets with 4-byte pointers. It lies inside the smoke's instance: valid until the smoke's
 * container or geometry goes away, which is not announced, so test the geometry's handle with `_api__object_valid`
 * before each use. The heads are the smoke's: read them, never write them.
 */
typedef struct ParticleExchangeBlock {
    Particle** active_head;   /**< [0] address of the head of the live particles, youngest first */
    Particle** inactive_head; /**< [4] address of the head of the pooled records */
    Particle* deleted_head;   /**< [8] head of the deleted list as of the attach request; good until the smoke's next
                                   frame, which may free its records */
    int32_t particle_count;   /**< [12] the smoke's Number of Particles as of the attach request */
    float reserved;           /**< [16] 0 */
} ParticleExchangeBlock;

#endif
