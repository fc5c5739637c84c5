/* Shared by hosts and plug-ins: how a consumer plug-in attaches to the live particles of a smoke. C11 and C++. */
#ifndef TOVU_HOST_EXCHANGE_H
#define TOVU_HOST_EXCHANGE_H

#include <stdint.h>

#include "particle_record.h"

/*
 * A consumer sends both requests to the smoke's geometry through `_api__geom_dispatcher`, from any of its own entry
 * points that have an instance, and accesses the records only in those calls. Attach one consumer at a time: the
 * attachment of a second one replaces that of the first.
 *
 * While a consumer is attached
 * - at most `birth_limit` particles are born per frame; further births stay due;
 * - live particles with neither `claimed` nor `released` set do not move, do not age and are not drawn. New particles
 *   have neither set, so check the live particles every frame;
 * - the remaining life of a released particle is cut once to `death_acceleration` percent. Under the smoke's Spawn Type
 *   Image that happens only to particles off the mask;
 * - records that leave the pool because Number of Particles dropped move to the deleted list. In its next frame the
 *   smoke frees those whose `claimed` is 0: clear it on each record that you no longer need.
 * A particle that dies keeps `claimed` in the pool; its next birth clears both flags.
 */

/**
 * Attach to a smoke, or refresh an attachment. data: a `ParticleAttachRequest`; reply: the address of a
 * `ParticleExchangeBlock *` that the smoke sets. Set it to null before: other plug-ins leave it unchanged.
 * Ignored if `data` or `reply` is null. May be sent every frame, which updates the copied values in the block.
 */
#define TOVU_REQUEST_ATTACH INT32_C(0x52414431) /* 'RAD1' */

/**
 * Detach: all live particles return to the pool, `claimed` is cleared on all records, the deleted list is freed.
 * data: not read; reply: the address of a `ParticleExchangeBlock *` that the smoke sets to null, or null.
 */
#define TOVU_REQUEST_DETACH INT32_C(0x52414432) /* 'RAD2' */

/** The data of an attach request. The consumer owns it; the smoke reads it only during the request. */
typedef struct ParticleAttachRequest {
    int32_t birth_limit;      /**< [0] maximum births per frame while attached; 0 or less: none */
    float death_acceleration; /**< [4] 0 to 100, percent of the remaining life that a released particle keeps, and,
                                 under Spawn Type Container or Image, any particle outside the shape or off the mask.
                                 Also sets the smoke's own Death Acceleration, which keeps it after the detach.
                                 100: no cut */
    uint8_t owns_colour;      /**< [8] nonzero: the consumer writes `Particle::color` and the smoke only `alpha`; has no
                                   effect while the smoke's Use Array is on */
} ParticleAttachRequest;

/**
 * The reply to an attach request; offsets in brackets apply to 4-byte pointers. It is part of the smoke's instance and
 * valid until the smoke's container or geometry is removed. That is not announced: test the geometry's handle with
 * `_api__object_valid` before each use. The smoke owns the list heads: read them, never write them.
 */
typedef struct ParticleExchangeBlock {
    Particle** active_head;   /**< [0] address of the head of the live particles, youngest first */
    Particle** inactive_head; /**< [4] address of the head of the pooled records */
    Particle* deleted_head;   /**< [8] head of the deleted list as of the attach request; valid until the smoke's next
                                   frame, which may free its records */
    int32_t particle_count;   /**< [12] the smoke's Number of Particles as of the attach request */
    float reserved;           /**< [16] 0 */
} ParticleExchangeBlock;

#endif
