/*
 * A geometry plug-in that supplies the spawn points of a smoke: a band along a spiral or a ring. Name its container as
 * the smoke's Spawn Container, and set the smoke's Spawn Type to Container.
 *
 * This file follows the contract; band.h is the shape.
 */
#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <tovu/entry_points.h>
#include <tovu/host_services.h>
#include <tovu/opengl.h>
#include <tovu/spawn_requests.h>

#include "band.h"

/* Name, label, default, minimum, maximum; the order is the order of the slots. Lengths are container units. */
#define SPIRAL_FLOATS(FLOAT)                                \
    FLOAT(outer_radius, "Outer Radius", 100.0f, 0.0f, 1e6f) \
    FLOAT(inner_radius, "Inner Radius", 20.0f, 0.0f, 1e6f)  \
    FLOAT(turns, "Turns", 3.0f, 0.01f, 50.0f)               \
    FLOAT(thickness, "Thickness", 6.0f, 0.0f, 1e6f)         \
    FLOAT(depth, "Depth", 0.0f, 0.0f, 1e6f)                 \
    FLOAT(angle, "Angle", 0.0f, -360.0f, 360.0f)            \
    FLOAT(spin, "Spin per Second", 0.0f, -3600.0f, 3600.0f) \
    FLOAT(line_width, "Line Width", 2.0f, 0.0f, 10.0f)
#define SPIRAL_COLOURS(COLOUR)  \
    COLOUR(red, "Red", 255)     \
    COLOUR(green, "Green", 255) \
    COLOUR(blue, "Blue", 255)

enum { kCoordinatesLocal, kCoordinatesWorld };
enum { kCornersPerTurn = 96 };

/* The instance's block: the parameter slots, which the host fills, then the instance's own state. */
typedef struct Spiral {
#define FLOAT(name, label, initial, minimum, maximum) float name;
#define COLOUR(name, label, initial) int32_t name;
    SPIRAL_FLOATS(FLOAT)
    int32_t coordinates;
    SPIRAL_COLOURS(COLOUR)
#undef FLOAT
#undef COLOUR
    float spun;           /* degrees turned so far */
    int32_t last_count;   /* the retrace counter of the last frame, 0 before the first */
    Band band;            /* of the current frame */
    float point_depth;    /* of the current frame, units */
    float to_smoke[16];   /* from this container's coordinates to those of the smoke */
    float from_smoke[16]; /* and back */
} Spiral;

/* ---- Parameters ---- */

/* A slot may hold any bits. Values out of range are clamped; not-a-number becomes the default. */
static float held(float value, float initial, float minimum, float maximum) {
    if (isnan(value)) return initial;
    return value < minimum ? minimum : value > maximum ? maximum : value;
}

static Spiral values_of(const Spiral* spiral) {
    Spiral values = *spiral;
#define FLOAT(name, label, initial, minimum, maximum) values.name = held(values.name, initial, minimum, maximum);
    SPIRAL_FLOATS(FLOAT)
#undef FLOAT
#define COLOUR(name, label, initial) values.name = values.name < 0 ? 0 : values.name > 255 ? 255 : values.name;
    SPIRAL_COLOURS(COLOUR)
#undef COLOUR
    return values;
}

static const char* const kCoordinatesChoices[] = {"Local", "World", NULL};

int32_t PLUGIN_INIT(void) {
    pelRegisterPlugin("TovuSpiral");
    pelRegisterPluginType(1);
#define FLOAT(name, label, initial, minimum, maximum) \
    pelRegisterParameterFloat(#name, label, initial, minimum, maximum);
    SPIRAL_FLOATS(FLOAT)
#undef FLOAT
    pelRegisterParameterRadio("coordinates", "Coordinates", kCoordinatesWorld, kCoordinatesChoices);
#define COLOUR(name, label, initial) pelRegisterParameterInt(#name, label, initial, 0, 255);
    SPIRAL_COLOURS(COLOUR)
#undef COLOUR
    pelRegisterInfoText("info", "Spawn points along a spiral; a ring when both radii are equal");
    pelRegisterTotalSize((int32_t)sizeof(Spiral));
    pelRegisterUseLOD(0);
    pelRegisterUseEvents(0);
    return 0;
}

/* ---- Frames ---- */

static void set_identity(float* matrix) {
    for (int i = 0; i < 16; ++i) matrix[i] = i % 5 == 0 ? 1.0f : 0.0f;
}

/* Reads parameters and placement: once a frame, since a frame may ask for thousands of points. */
static void prepare(Spiral* spiral) {
    const Spiral values = values_of(spiral);
    spiral->band = (Band){values.inner_radius, values.outer_radius, values.turns, values.thickness,
                          fmodf(values.angle + spiral->spun, 360.0f)};
    spiral->point_depth = values.depth;
    set_identity(spiral->to_smoke);
    set_identity(spiral->from_smoke);
    if (values.coordinates == kCoordinatesLocal) return;
    const int32_t container = _api__get_objectid_local("", TOVU_OBJECT_CONTAINER);
    if (!_api__object_valid(container)) return;
    _api__container_get_transformation_matrix(container, spiral->to_smoke);
    _api__container_get_inverse_matrix(container, spiral->from_smoke);
}

void PLUGIN_INIT_FUNCTION(void* instance) {
    Spiral* spiral = instance;
    spiral->spun = 0;
    spiral->last_count = 0;
    prepare(spiral); /* a pass may come before the first frame */
}

void PLUGIN_CLEANUP_FUNCTION(void* instance) {
    (void)instance; /* owns nothing */
}

void PLUGIN_CHANGED_CALLBACK(void* instance, int32_t parameter_index) {
    (void)instance, (void)parameter_index; /* all slots are read in every frame */
}

void PLUGIN_EXEC_ACTION(void* instance, int32_t action) {
    (void)instance, (void)action; /* no buttons */
}

uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t unused) {
    (void)unused;
    Spiral* spiral = instance;
    int32_t count = 0;
    double seconds_per_frame = 0;
    _api__pellor_get_retrace_counter(&count);
    _api__pellor_get_refreshrate(&seconds_per_frame);
    /* The counter jumps when frames are dropped, and may restart. An unchanged count means the same frame. */
    const int32_t frames = spiral->last_count > 0 && count > spiral->last_count ? count - spiral->last_count : 0;
    spiral->last_count = count;
    spiral->spun = (float)fmod(spiral->spun + seconds_per_frame * frames * values_of(spiral).spin, 360);

    prepare(spiral);
    const float reach = fmaxf(spiral->band.inner_radius, spiral->band.outer_radius) + spiral->band.thickness / 2;
    const int32_t container = _api__get_objectid_local("", TOVU_OBJECT_CONTAINER);
    if (_api__object_valid(container))
        _api__container_set_bounding_box(container, -reach, -reach, 0, reach, reach, spiral->point_depth);
    _api__set_geom_changed(_api__get_objectid_local("GEOM", TOVU_OBJECT_GEOMETRY));
    return 1;
}

static void draw_rim(const Band* band, float across) {
    const int steps = (int)ceilf(band->turns * kCornersPerTurn);
    ormixGL_glBegin(GL_LINE_STRIP);
    for (int i = 0; i <= steps; ++i) {
        float x, y;
        band_corner(band, (float)i / (float)steps, across, &x, &y);
        ormixGL_glVertex3f(x, y, 0);
    }
    ormixGL_glEnd();
}

uint8_t PLUGIN_RENDER_OPENGL(void* instance, int32_t render_flags, float opacity) {
    const Spiral values = values_of(instance);
    if (values.line_width <= 0) return 1;
    if ((render_flags & 1) == 0) { /* in a reduced pass the host sets colours and state */
        ormixGL_glDisable(GL_TEXTURE_2D);
        ormixGL_glLineWidth(values.line_width);
        ormixGL_glColor4f((float)values.red / 255, (float)values.green / 255, (float)values.blue / 255, opacity);
    }
    draw_rim(&values.band, -1);
    draw_rim(&values.band, 1);
    return 1;
}

/* ---- Requests of a smoke ---- */

/* 0 to below 1. Drawn from `rand`, which a host seeds to get the same run again. */
static float random_share(void) {
    const int drawn = RAND_MAX > 32767 ? rand() >> 16 : rand(); /* the upper 15 bits */
    return (float)drawn / 32768.0f;
}

static void transform(const float* matrix, float* p) {
    float mapped[3];
    for (int row = 0; row < 3; ++row)
        mapped[row] = matrix[row] * p[0] + matrix[4 + row] * p[1] + matrix[8 + row] * p[2] + matrix[12 + row];
    memcpy(p, mapped, sizeof mapped);
}

static void make_point(const Spiral* spiral, float* p) {
    const float share = random_share(), across_share = random_share();
    band_point(&spiral->band, share, across_share, &p[0], &p[1]);
    p[2] = spiral->point_depth > 0 ? spiral->point_depth * random_share() : 0;
    transform(spiral->to_smoke, p);
}

/* Ignores Z, as the smoke does with outlines: a particle that drifts in depth stays inside. */
static bool covers(const Spiral* spiral, const float* point) {
    float p[3];
    memcpy(p, point, sizeof p);
    transform(spiral->from_smoke, p);
    return band_covers(&spiral->band, p[0], p[1]);
}

void PLUGIN_DISPATCHER_CALLBACK(void* instance, int32_t request, void* data, void* reply) {
    Spiral* spiral = instance;
    int32_t* answer = reply;
    if (request == TOVU_REQUEST_SUPPLIES_SPAWN_POINTS) {
        prepare(spiral); /* first request of a frame; may come before PLUGIN_NEW_GEOM */
        *answer = 1;
    } else if (request == TOVU_REQUEST_NEW_SPAWN_POINT) {
        make_point(spiral, data);
        *answer = 1;
    } else if (request == TOVU_REQUEST_IS_INSIDE) {
        *answer = covers(spiral, data);
    }
}
