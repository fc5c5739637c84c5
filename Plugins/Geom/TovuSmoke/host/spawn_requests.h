/* Shared by hosts and plug-ins: how a geometry plug-in supplies the spawn points of a smoke. C11 and C++. */
#ifndef TOVU_HOST_SPAWN_REQUESTS_H
#define TOVU_HOST_SPAWN_REQUESTS_H

#include <stdint.h>

/*
 * A smoke whose Spawn Type is Container sends these to the geometry of its spawn container through
 * `_api__geom_dispatcher`. The reply is the address of an `int32_t` that holds 0; a request is taken as answered with
 * yes when the dispatcher and that slot are both nonzero. Points are three floats, under the smoke's Reference.
 */

/** Will this geometry supply spawn points itself? data: null. Sent once a frame, before any other request. */
#define TOVU_REQUEST_SUPPLIES_SPAWN_POINTS ((int32_t)0x5350574E) /* 'SPWN' */

/** Write a spawn point. data: `float[3]` to fill. Sent once for every particle that is born; no means no birth. */
#define TOVU_REQUEST_NEW_SPAWN_POINT ((int32_t)0x4E455750) /* 'NEWP' */

/** Is this point inside? data: `float[3]`, not to be written. Sent for particles under Death Acceleration. */
#define TOVU_REQUEST_IS_INSIDE ((int32_t)0x4953494E) /* 'ISIN' */

#endif
