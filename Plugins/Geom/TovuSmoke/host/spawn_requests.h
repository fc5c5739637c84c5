/* Shared by hosts and plug-ins: how a geometry plug-in supplies the spawn points of a smoke. C11 and C++. */
#ifndef TOVU_HOST_SPAWN_REQUESTS_H
#define TOVU_HOST_SPAWN_REQUESTS_H

#include <stdint.h>

/*
 * A smoke with Spawn Type Container sends these requests to the geometry of its spawn container, through
 * `_api__geom_dispatcher` inside the smoke's PLUGIN_NEW_GEOM. `reply` is the address of an `int32_t` that is 0. The
 * answer is yes if the dispatcher's result and that slot are both nonzero; leave the slot unchanged for no. The smoke
 * owns the points; they are valid only during the call.
 *
 * Requests and buttons that reach the smoke during such a call take effect immediately: after a detach or a reset the
 * smoke sends no more of these requests in this frame. A nested PLUGIN_NEW_GEOM of the smoke returns without effect.
 */

/**
 * Does this geometry supply spawn points? data: null. Sent once per frame, before all other requests of the frame.
 * After a no the smoke reads the geometry's meshes.
 */
#define TOVU_REQUEST_SUPPLIES_SPAWN_POINTS INT32_C(0x5350574E) /* 'SPWN' */

/**
 * Write a spawn point. data: `float[3]` to fill, in the coordinates of the smoke's container; under Reference World the
 * smoke maps the point to the world. Sent once per particle to be born. No means that the particle is not born.
 */
#define TOVU_REQUEST_NEW_SPAWN_POINT INT32_C(0x4E455750) /* 'NEWP' */

/**
 * Is this point inside? data: `float[3]`, not to be written: a particle's position, in the coordinates of the smoke's
 * container under Reference Local, of the world under World. Sent every frame while the smoke's Death Acceleration is
 * below 100, for each particle whose life it has not shortened yet.
 */
#define TOVU_REQUEST_IS_INSIDE INT32_C(0x4953494E) /* 'ISIN' */

#endif
