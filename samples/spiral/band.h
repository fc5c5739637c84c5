/* A band along an Archimedean spiral in the x-y plane around the origin; a ring when both radii are equal. */
#ifndef TOVU_SPIRAL_BAND_H
#define TOVU_SPIRAL_BAND_H

#include <stdbool.h>

typedef struct Band {
    float inner_radius; /* of the middle line where it begins, units, 0 or more */
    float outer_radius; /* and where it ends */
    float turns;        /* counter-clockwise on the way, above 0 */
    float thickness;    /* measured along the radius, units, 0 or more */
    float angle;        /* where it begins, degrees from +x to +y */
} Band;

/* A corner of the band. along: 0 at its beginning to 1 at its end. across: -1 for the rim nearer to the origin, 1 for
   the other one; a rim does not cross the origin. */
void band_corner(const Band* band, float along, float across, float* x, float* y);

/* A point of the band for two numbers from 0 to 1. Evenly distributed numbers give evenly distributed points where the
   band does not reach the origin: as much of the band lies within `share` of its area as `share` says. */
void band_point(const Band* band, float share, float across_share, float* x, float* y);

/* Does the band cover the point? The rims belong to it. */
bool band_covers(const Band* band, float x, float y);

#endif
