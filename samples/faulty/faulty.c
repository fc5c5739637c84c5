/*
 * A small plug-in with one fault, which the string FAULT names. Each is a typical mistake of authors, and `tovu validate`
 * names the broken rule. Without a fault (NONE) the plug-in is correct: it draws a wheel of quads, consumes the smoke that
 * its parameter names, and supplies spawn points.
 */
#include <fenv.h>
#include <math.h>
#include <pthread.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <tovu/entry_points.h>
#include <tovu/exchange.h>
#include <tovu/host_services.h>
#include <tovu/opengl.h>
#include <tovu/parameter_slots.h>
#include <tovu/spawn_requests.h>

/*
 * The faults, and the checks that find them:
 *   LIBM_FORGOTTEN      file.imports
 *   DEFAULT_ABOVE       register.values
 *   SIZE_OF_POINTER     register.size
 *   NAME_NOT_TESTED     life.cycle
 *   ACTION_UNKNOWN      life.orders
 *   FIELD_NOT_SET       life.garbage
 *   STATE_SHARED        life.two
 *   CLEARS_TOO_MUCH     block.bounds
 *   SLOT_CORRECTED      block.slots
 *   ANSWER_NOT_CLOSED   text.bounds
 *   TEXT_KEPT           text.moves
 *   PIXELS_KEPT         image.moves
 *   CORNERS_NOT_FREED   heap.leaks
 *   CORNERS_EACH_FRAME  heap.steady
 *   WORKER_CALLS_HOST   thread.host
 *   ROUNDING_LEFT       process.state
 *   SECTION_LEFT_OPEN   events.nest
 *   END_FORGOTTEN       gl.pass
 *   DRAWS_IN_FRAME      gl.outside
 *   ARRAY_ON_STACK      gl.arrays
 *   DIVIDES_BY_ZERO     gl.values
 *   BOX_UPSIDE_DOWN     box.finite
 *   ANSWERS_ALL         dispatch.quiet
 *   RELINKS             consumer.lists
 *   NEVER_DETACHES      consumer.manners
 *   POINT_NOT_WRITTEN   spawn.answers
 *   OUT_VALUE_NOT_SET   host.lies
 *   CHOICE_AS_INDEX     fuzz.slots
 */
static bool breaks(const char* rule) {
    return strcmp(rule, FAULT) == 0;
}

/* The block: the slots in the order of registration, then the plug-in's own fields. */
typedef struct Wheel {
    int32_t quads;
    float radius;
    int32_t shape;
    uint32_t smoke;
    uint32_t picture;
    uint32_t title;
    int32_t attached; /* geometry of the smoke, or -1 */
    float turned;     /* degrees */
    int32_t frames;
    float* corners; /* 3 numbers for each of the 4 corners of each quad */
    const char* kept_title;
    const uint8_t* kept_pixels;
    pthread_t worker;
} Wheel;

enum { kMostQuads = 64, kTitleLength = 16 };

static int32_t draw_event;
static float shared_turned;
static int seen; /* uses values that are read, so that the compiler keeps the reads */

static Wheel* wheel_at(void* instance) {
    return (Wheel*)instance;
}

int32_t PLUGIN_INIT(void) {
    static const char* const shapes[] = {"Flat", "Cone", NULL};
    pelRegisterPlugin("Wheel");
    pelRegisterPluginType(1);
    pelRegisterParameterInt("quads", "Quads", breaks("DEFAULT_ABOVE") ? 100 : 8, 0, kMostQuads);
    pelRegisterParameterFloat("radius", "Radius", 20.0f, 0.0f, 1000.0f);
    pelRegisterParameterRadio("shape", "Shape", 0, shapes);
    pelRegisterParameterContainer("smoke", "Smoke", "");
    pelRegisterParameterImage("picture", "Picture", "");
    pelRegisterParameterString("title", "Title", "wheel", 30, kTitleLength, 0);
    pelRegisterPushButton("measure", "Measure", 1);
    pelRegisterTotalSize(breaks("SIZE_OF_POINTER") ? (int32_t)sizeof(Wheel*) : (int32_t)sizeof(Wheel));
    pelRegisterUseLOD(0);
    pelRegisterUseEvents(1);
    draw_event = pelRegisterEvent("Draw", 0);
    return 0;
}

void PLUGIN_INIT_FUNCTION(void* instance) {
    Wheel* wheel = wheel_at(instance);
    const size_t own = offsetof(Wheel, attached);
    const size_t kept = breaks("FIELD_NOT_SET") ? sizeof(float) : 0; /* `turned` keeps what the block held before */
    memset((char*)wheel + own + 4 + kept, 0, sizeof *wheel - own - 4 - kept + (breaks("CLEARS_TOO_MUCH") ? 4 : 0));
    wheel->attached = -1;
    wheel->corners = (float*)malloc(kMostQuads * 4 * 3 * sizeof(float));
    wheel->kept_title = tovu_slot_text(wheel->title);
}

static void detach(Wheel* wheel) {
    ParticleExchangeBlock* block = NULL;
    if (wheel->attached != -1 && _api__object_valid(wheel->attached))
        _api__geom_dispatcher(wheel->attached, TOVU_REQUEST_DETACH, NULL, &block);
    wheel->attached = -1;
}

void PLUGIN_CLEANUP_FUNCTION(void* instance) {
    Wheel* wheel = wheel_at(instance);
    if (!breaks("NEVER_DETACHES")) detach(wheel);
    if (!breaks("CORNERS_NOT_FREED")) free(wheel->corners);
}

/* The geometry of the container that the slot names, or -1. */
static int32_t smoke_of(const Wheel* wheel) {
    const char* name = tovu_slot_text(wheel->smoke);
    int32_t geometry;
    if (!breaks("OUT_VALUE_NOT_SET")) geometry = -1;
    const int32_t container = *name ? _api__get_objectid(name, "", TOVU_OBJECT_CONTAINER) : -1;
    if (!_api__object_valid(container)) return -1;
    _api__container_get_geometry(container, &geometry); /* a host that does not know the container leaves it so */
    return _api__object_valid(geometry) ? geometry : -1;
}

static void consume(Wheel* wheel) {
    ParticleAttachRequest request = {1000, 100.0f, 0};
    ParticleExchangeBlock* block = NULL;
    const int32_t smoke = smoke_of(wheel);
    if (smoke != wheel->attached) detach(wheel);
    if (smoke == -1 || !_api__geom_dispatcher(smoke, TOVU_REQUEST_ATTACH, &request, &block) || !block) return;
    wheel->attached = smoke;
    for (Particle* p = block->deleted_head; p; p = p->next) p->claimed = 0;
    for (Particle* p = *block->active_head; p; p = p->next) {
        p->claimed = 1;
        if (breaks("RELINKS") && p->next && p->next->age > 0.2f) p->next = p->next->next; /* "removes" the old one */
    }
}

static void look_at_picture(Wheel* wheel) {
    const char* name = tovu_slot_text(wheel->picture);
    const int32_t image = *name ? _api__get_image_objectid(name) : -1;
    int32_t width = 0, height = 0;
    uint8_t* pixels = NULL;
    if (breaks("PIXELS_KEPT") && wheel->kept_pixels) seen += wheel->kept_pixels[0];
    if (!breaks("NAME_NOT_TESTED") && !_api__object_valid(image)) {
        wheel->kept_pixels = NULL;
        return;
    }
    _api__get_image_size(image, &width, &height);
    _api__get_image_data(image, &pixels);
    if (breaks("NAME_NOT_TESTED") || (pixels && width > 0 && height > 0)) seen += pixels[0];
    wheel->kept_pixels = pixels;
}

static void* work(void* instance) {
    _api__set_geom_changed(wheel_at(instance)->attached);
    return NULL;
}

static int32_t quads_of(const Wheel* wheel) {
    return wheel->quads < 0 ? 0 : wheel->quads > kMostQuads ? kMostQuads : wheel->quads;
}

static float radius_of(const Wheel* wheel) {
    return wheel->radius >= 0 && wheel->radius <= 1000 ? wheel->radius : 20;
}

uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t unused) {
    static const float heights[] = {0, 10};
    Wheel* wheel = wheel_at(instance);
    const int32_t container = _api__get_objectid_local("", TOVU_OBJECT_CONTAINER);
    const float r = radius_of(wheel), h = heights[breaks("CHOICE_AS_INDEX") ? wheel->shape : wheel->shape == 1];
    double seconds = 0;
    (void)unused;
    _api__pellor_get_refreshrate(&seconds);
    if (!(seconds > 0 && seconds < 10)) seconds = 0;
    ++wheel->frames;
    wheel->turned = fmodf(wheel->turned + 90 * (float)seconds, 360);
    if (breaks("STATE_SHARED")) wheel->turned = shared_turned = fmodf(shared_turned + 1, 360);
    if (breaks("SLOT_CORRECTED") && wheel->radius < 1) wheel->radius = 1;
    if (breaks("CORNERS_EACH_FRAME")) {
        free(wheel->corners);
        wheel->corners = (float*)malloc(kMostQuads * 4 * 3 * sizeof(float));
    }
    if (breaks("TEXT_KEPT")) seen += wheel->kept_title[0];
    if (breaks("ROUNDING_LEFT")) fesetround(FE_TOWARDZERO);
    if (breaks("WORKER_CALLS_HOST") && pthread_create(&wheel->worker, NULL, work, wheel) == 0)
        pthread_join(wheel->worker, NULL);
    if (breaks("DRAWS_IN_FRAME")) ormixGL_glColor4f(1, 1, 1, 1);
    consume(wheel);
    look_at_picture(wheel);
    if (_api__object_valid(container)) {
        const float low = breaks("BOX_UPSIDE_DOWN") ? 2 * h : 0;
        _api__container_set_bounding_box(container, -2 * r, -2 * r, low, 2 * r, 2 * r, h);
    }
    _api__set_geom_changed(_api__get_objectid_local("GEOM", TOVU_OBJECT_GEOMETRY));
    return 1;
}

/* Corners of all quads around the axis; returns how many quads. */
static int32_t place_corners(const Wheel* wheel, float* corners) {
    static const float xs[] = {-1, 1, 1, -1}, ys[] = {-1, -1, 1, 1};
    const int32_t count = quads_of(wheel);
    const float r = radius_of(wheel), size = r / 4;
    for (int32_t i = 0; i < count; ++i) {
        const float share = (float)i / (float)(breaks("DIVIDES_BY_ZERO") ? count - 1 : count);
        const float angle = (share * 360 + wheel->turned) * 0.01745329f;
        for (int c = 0; c < 4; ++c) {
            float* corner = corners + 12 * i + 3 * c;
            corner[0] = r * cosf(angle) + size * xs[c];
            corner[1] = r * sinf(angle) + size * ys[c];
            corner[2] = 0;
        }
    }
    return count;
}

/* Far down the stack, and gone when it returns. */
static int32_t place_on_stack(const Wheel* wheel) {
    float corners[kMostQuads * 4 * 3];
    const int32_t count = place_corners(wheel, corners);
    ormixGL_glVertexPointer(3, GL_FLOAT, 0, corners);
    return count;
}

uint8_t PLUGIN_RENDER_OPENGL(void* instance, int32_t render_flags, float opacity) {
    Wheel* wheel = wheel_at(instance);
    int32_t count;
    pelEventStart(draw_event);
    if ((render_flags & 1) == 0) ormixGL_glColor4f(1, 1, 1, opacity);
    if (breaks("ARRAY_ON_STACK")) {
        count = place_on_stack(wheel);
    } else {
        count = place_corners(wheel, wheel->corners);
        ormixGL_glVertexPointer(3, GL_FLOAT, 0, wheel->corners);
    }
    ormixGL_glEnableClientState(GL_VERTEX_ARRAY);
    ormixGL_glDrawArrays(GL_QUADS, 0, 4 * count);
    ormixGL_glDisableClientState(GL_VERTEX_ARRAY);
    ormixGL_glBegin(GL_LINES);
    ormixGL_glVertex3f(0, 0, 0);
    ormixGL_glVertex3f(0, 0, 10);
    if (!breaks("END_FORGOTTEN")) ormixGL_glEnd();
    if (!breaks("SECTION_LEFT_OPEN") || count > 0) pelEventEnd(draw_event);
    return 1;
}

void PLUGIN_CHANGED_CALLBACK(void* instance, int32_t parameter_index) {
    (void)instance, (void)parameter_index;
}

void PLUGIN_EXEC_ACTION(void* instance, int32_t action) {
    static const char answer[] = "20 by 20 by 10!!";
    if (breaks("ACTION_UNKNOWN") && action != 1) abort();
    if (action != 1) return;
    char* title = (char*)(uintptr_t)wheel_at(instance)->title;
    const size_t bytes = breaks("ANSWER_NOT_CLOSED") ? kTitleLength : 8;
    if (!title) return;
    memcpy(title, answer, bytes);
    if (!breaks("ANSWER_NOT_CLOSED")) title[bytes] = '\0';
}

void PLUGIN_DISPATCHER_CALLBACK(void* instance, int32_t request, void* data, void* reply) {
    const float r = radius_of(wheel_at(instance));
    float* point = (float*)data;
    if (request == TOVU_REQUEST_SUPPLIES_SPAWN_POINTS || breaks("ANSWERS_ALL")) *(int32_t*)reply = 1;
    if (request == TOVU_REQUEST_NEW_SPAWN_POINT) {
        point[0] = point[1] = r / 2;
        if (!breaks("POINT_NOT_WRITTEN")) point[2] = 0;
        *(int32_t*)reply = 1;
    }
    if (request == TOVU_REQUEST_IS_INSIDE) *(int32_t*)reply = point[0] * point[0] + point[1] * point[1] <= r * r;
}
