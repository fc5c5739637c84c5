#include "band.h"

#include <math.h>

static const double kDegree = 3.14159265358979323846 / 180;

static double middle_radius(const Band* band, double along) {
    return band->inner_radius + ((double)band->outer_radius - band->inner_radius) * along;
}

static double rim_radius(const Band* band, double along, double across) {
    return fmax(0, middle_radius(band, along) + across * band->thickness / 2);
}

static void place(const Band* band, double along, double radius, float* x, float* y) {
    const double angle = (band->angle + 360 * along * band->turns) * kDegree;
    *x = (float)(radius * cos(angle));
    *y = (float)(radius * sin(angle));
}

void band_corner(const Band* band, float along, float across, float* x, float* y) {
    place(band, along, rim_radius(band, along, across), x, y);
}

void band_point(const Band* band, float share, float across_share, float* x, float* y) {
    /* The area per degree is proportional to the radius, so the area from the start is proportional to the square of
       the radius. The division below stays exact when the two radii are equal. */
    const double first = band->inner_radius, last = band->outer_radius;
    const double radius = sqrt(first * first + share * (last * last - first * first));
    const double along = first + last > 0 ? share * (first + last) / (radius + first) : 0;
    /* The same holds between the two rims. */
    const double near = rim_radius(band, along, -1), far = rim_radius(band, along, 1);
    place(band, along, sqrt(near * near + across_share * (far * far - near * near)), x, y);
}

bool band_covers(const Band* band, float x, float y) {
    const double radius = hypot((double)x, y);
    double turn = (atan2((double)y, x) / kDegree - band->angle) / 360;
    for (turn -= floor(turn); turn <= band->turns; turn += 1)
        if (fabs(radius - middle_radius(band, turn / band->turns)) <= band->thickness / 2) return true;
    return false;
}
