/* A band along an Archimedean spiral in the x-y plane around the origin; a ring when both radii are equal. */
#ifndef TOVU_SPIRAL_BAND_H
#define TOVU_SPIRAL_BAND_H

#include <stdbool.h>

typedef struct Band {
    float inner_radius; /* of the middle line at its start, units, 0 or more */
    float outer_radius; /* and at its end */
    float turns;        /* counter-clockwise, above 0 */
    float thickness;    /* measured along the radius, units, 0 or more */
    float angle;        /* of its start, degrees from +x to +y */
} Band;

/* A point of a rim. along: 0 at the band's start to 1 at its end. across: -1 for the inner rim, 1 for the outer one. A
   rim does not cross the origin. */
void band_corner(const Band* band, float along, float across, float* x, float* y);

/* Maps two numbers from 0 to 1 to a point of the band. share: part of the band's area between its start and the point.
   across_share: the same between the rims. Uniform numbers give points that are uniform over the area, unless the band
   reaches the origin. */
void band_point(const Band* band, float share, float across_share, float* x, float* y);

/* Whether the point lies on the band, rims included. */
bool band_covers(const Band* band, float x, float y);

#endif
