/* Shared by hosts and plug-ins: how a geometry plug-in supplies the spawn points of a smoke. C11 and C++. */
#ifndef TOVU_HOST_SPAWN_REQUESTS_H
#define TOVU_HOST_SPAWN_REQUESTS_H

#include <stdint.h>

/*
 * A smoke whose Spawn Type is Container sends these to the geometry of its spawn container through
 * `_api__geom_dispatcher`, inside the smoke's PLUGIN_NEW_GEOM. The reply is the address of an `int32_t` that holds 0; a
 * request is taken as answered with yes when the dispatcher's result and that slot are both nonzero. Leave the slot
 * alone for no. The points are the smoke's and valid during the call only.
 *
 * Requests and buttons that reach the smoke before the answer does take effect at once: after a detach or a reset it
 * asks no more in this frame. Its PLUGIN_NEW_GEOM returns at once.
 */

/**
 * Will this geometry supply spawn points itself? data: null. Sent once a frame, before any other request of the frame;
 * after a no the smoke reads the geometry's meshes instead.
 */
#define TOVU_REQUEST_SUPPLIES_SPAWN_POINTS INT32_C(0x5350574E) /* 'SPWN' */

/**
 * Write a spawn point. data: `float[3]` to fill, in the coordinates of the smoke's container, which under Reference
 * World the smoke itself maps on to the world. Sent once for every particle that is to be born; no means no birth.
 */
#define TOVU_REQUEST_NEW_SPAWN_POINT INT32_C(0x4E455750) /* 'NEWP' */

/**
 * Is this point inside? data: `float[3]`, not to be written: a particle's position, in the coordinates of the smoke's
 * container under Reference Local, of the world under World. Sent every frame while the smoke's Death Acceleration is
 * below 100, for each particle that it has not cut yet.
 */
#define TOVU_REQUEST_IS_INSIDE INT32_C(0x4953494E) /* 'ISIN' */

#endif
