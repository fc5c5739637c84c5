// A host: loads a plug-in, gives it a container and a camera, runs a hundred frames and prints what the
// plug-in registered, its bounding box, the number of its quads and a digest of all that it sent.
//   tovu_sample_host PLUGIN [parameter=value ...]
// This file defines every function that a plug-in imports, and the process exports them (see CMakeLists.txt), so that
// plug-ins find them. A real host answers the same calls from its scene.
#include <tovu/entry_points.h>
#include <tovu/host_services.h>
#include <tovu/opengl.h>

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform.h"

namespace {

enum Handle : int32_t { kContainer = 1, kGeometry, kCamera, kCameraPosition, kCameraDirection };

enum class Kind { kWhole, kNumber, kText };
struct Parameter {
    std::string name;
    Kind kind;
    uint32_t bits;     // of the slot, for Whole (an int32_t) and Number (a float)
    std::string text;  // for Text
    size_t longest;    // bytes of text without the NUL, for Text
};
std::vector<Parameter> parameters;  // the order of registration is the order of the slots
int32_t block_size = 0;
int32_t event_count = 0;

constexpr double kSecondsPerFrame = 0.02;
constexpr float kCameraZ = 300;
int32_t retrace_counter = 0;
float box[6];                          // minimum and maximum of x, y, z, as sent last
int corners = 0;                       // of quads, in the current frame
bool inside_quads = false;             // between glBegin(GL_QUADS) and glEnd
const float* vertex_array = nullptr;   // three a corner
const uint8_t* color_array = nullptr;  // four a corner

// FNV-1a (Fowler, Noll and Vo) over the bits of all boxes, corners and colours: a plug-in that draws the same random
// numbers has the same digest on every platform. Processors differ in the bits of a NaN, so all NaNs count as one.
uint64_t digest = 14695981039346656037u;
void take_in(const void* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) digest = (digest ^ static_cast<const uint8_t*>(bytes)[i]) * 1099511628211u;
}
void take_in_numbers(const float* numbers, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const uint32_t bits = numbers[i] == numbers[i] ? std::bit_cast<uint32_t>(numbers[i]) : 0x7FC00000u;
        take_in(&bits, sizeof bits);
    }
}

void add(const char* type, Parameter parameter, const char* label) {
    std::printf("%2zu %-9s %-30s %-32s ", parameters.size(), type, parameter.name.c_str(), label);
    if (parameter.kind == Kind::kWhole) std::printf("%d\n", static_cast<int>(parameter.bits));
    if (parameter.kind == Kind::kNumber) std::printf("%g\n", static_cast<double>(std::bit_cast<float>(parameter.bits)));
    if (parameter.kind == Kind::kText) std::printf("'%s'\n", parameter.text.c_str());
    parameters.push_back(std::move(parameter));
}
void add_whole(const char* type, const char* name, const char* label, int32_t initial) {
    add(type, {name, Kind::kWhole, std::bit_cast<uint32_t>(initial), "", 0}, label);
}
void add_text(const char* type, const char* name, const char* label, const char* initial, int32_t longest) {
    add(type, {name, Kind::kText, 0, initial, static_cast<size_t>(longest)}, label);
}

void put(float* x, float* y, float* z, float to_x, float to_y, float to_z) {
    *x = to_x;
    *y = to_y;
    *z = to_z;
}
void put_identity(float* matrix) {
    for (int i = 0; i < 16; ++i) matrix[i] = i % 5 == 0 ? 1.0f : 0.0f;
}
int32_t local_object(const char* name, int32_t type) {
    if (type == TOVU_OBJECT_GEOMETRY && std::strcmp(name, "GEOM") == 0) return kGeometry;
    return type == TOVU_OBJECT_CONTAINER && *name == '\0' ? kContainer : -1;
}

}  // namespace

// The services. A call about an unknown object leaves the out values unchanged.

// Registration: called from PLUGIN_INIT. Texts are copied, since those of the plug-in may be temporary.
void pelRegisterPlugin(const char* name) {
    std::printf("plug-in %s\n", name);
}
void pelRegisterPluginType(int32_t type) {
    std::printf("type %d\n", type);
}
void pelRegisterParameterInt(const char* name, const char* label, int32_t initial, int32_t, int32_t) {
    add_whole("Int", name, label, initial);
}
void pelRegisterParameterFloat(const char* name, const char* label, float initial, float, float) {
    add("Float", {name, Kind::kNumber, std::bit_cast<uint32_t>(initial), "", 0}, label);
}
void pelRegisterParameterBool(const char* name, const char* label, int32_t initial) {
    add_whole("Bool", name, label, initial);
}
void pelRegisterParameterString(const char* name, const char* label, const char* initial, int32_t, int32_t longest,
                                int32_t) {
    add_text("String", name, label, initial, longest);
}
void pelRegisterParameterRadio(const char* name, const char* label, int32_t initial, const char* const*) {
    add_whole("Radio", name, label, initial);
}
void pelRegisterParameterContainer(const char* name, const char* label, const char* initial) {
    add_text("Container", name, label, initial, 255);
}
void pelRegisterParameterImage(const char* name, const char* label, const char* initial) {
    add_text("Image", name, label, initial, 255);
}
void pelRegisterInfoText(const char* name, const char* text) {
    std::printf("%s: %s\n", name, text);
}
void pelRegisterPushButton(const char* name, const char* label, int32_t action) {
    std::printf("button %s \"%s\" is action %d\n", name, label, action);
}
void pelRegisterTotalSize(int32_t bytes) {
    block_size = bytes;
    std::printf("%d bytes per instance\n", bytes);
}
void pelRegisterUseLOD(int32_t use) {
    std::printf("%s levels of detail\n", use ? "has" : "no");
}
void pelRegisterUseEvents(int32_t use) {
    std::printf("%s events\n", use ? "has" : "no");
}
int32_t pelRegisterEvent(const char* name, int32_t) {
    std::printf("event %s\n", name);
    return event_count++;
}
void pelEventStart(int32_t) {}
void pelEventEnd(int32_t) {}

// Scene objects: one container at the world's origin, neither turned nor scaled, and the geometry that it carries.
int32_t _api__get_objectid_local(const char* name, int32_t type) {
    return local_object(name, type);
}
int32_t _api__get_objectid(const char*, const char*, int32_t) {
    return -1;
}
int32_t _api__get_objectid_from_objectid(int32_t) {
    return -1;
}
int32_t _api__object_valid(int32_t object) {
    return object == kContainer || object == kGeometry || object == kCamera;
}
void _api__set_geom_changed(int32_t) {}
void _api__container_get_absolute_position(int32_t object, float* x, float* y, float* z) {
    if (object == kContainer) put(x, y, z, 0, 0, 0);
}
void _api__container_get_absolute_rotation(int32_t object, float* x, float* y, float* z) {
    if (object == kContainer) put(x, y, z, 0, 0, 0);
}
void _api__container_get_absolute_scaling(int32_t object, float* x, float* y, float* z) {
    if (object == kContainer) put(x, y, z, 1, 1, 1);
}
void _api__container_get_transformation_matrix(int32_t object, float* matrix) {
    if (object == kContainer) put_identity(matrix);
}
void _api__container_get_inverse_matrix(int32_t object, float* matrix) {
    if (object == kContainer) put_identity(matrix);
}
void _api__container_set_bounding_box(int32_t, float x0, float y0, float z0, float x1, float y1, float z1) {
    put(&box[0], &box[1], &box[2], x0, y0, z0);
    put(&box[3], &box[4], &box[5], x1, y1, z1);
    take_in_numbers(box, 6);
}
void _api__container_get_geometry(int32_t object, int32_t* geometry) {
    if (object == kContainer) *geometry = kGeometry;
}
int32_t _api__geom_dispatcher(int32_t, int32_t, void*, void*) {
    return 0;  // there is no other plug-in to ask
}

// Mesh access and images: this host has neither.
void _api__get_geom_detail(int32_t, int32_t*) {}
void _api__get_geom_geomod(int32_t, int32_t, int32_t, int32_t*) {}
void _api__geomod_init(int32_t) {}
void _api__geomod_get_info(int32_t, int32_t*, int32_t*, uint8_t*, uint8_t*, uint8_t*) {}
void _api__geomod_goto_mesh(int32_t, int32_t, int32_t*) {}
void _api__geomod_next_mesh(int32_t, int32_t*) {}
void _api__geomod_get_num_mesh_verices(int32_t, int32_t, int32_t*) {}
void _api__geomod_goto_vertex(int32_t, int32_t, int32_t, int32_t*) {}
void _api__geomod_next_vertex(int32_t, int32_t, int32_t*) {}
void _api__geomod_get_vertex(int32_t, int32_t, float*, float*, float*) {}
int32_t _api__get_image_objectid(const char*) {
    return -1;
}
void _api__get_image_size(int32_t, int32_t*, int32_t*) {}
void _api__get_image_format(int32_t, int32_t*) {}
void _api__get_image_data(int32_t, uint8_t**) {}

// The camera: on the Z axis, looking along -Z.
int32_t _api__get_cameraid(int32_t, const char*, int32_t type) {
    return type == TOVU_OBJECT_CAMERA ? kCamera : -1;
}
void _api__get_camera_pan(int32_t object, float* degrees) {
    if (object == kCamera) *degrees = 0;
}
void _api__get_camera_tilt(int32_t object, float* degrees) {
    if (object == kCamera) *degrees = 0;
}
void _api__get_camera_view_matrix(int32_t object, float* matrix) {
    if (object == kCamera) {
        put_identity(matrix);
        matrix[14] = -kCameraZ;
    }
}
void _api__get_camera_position(int32_t camera, int32_t* object) {
    if (camera == kCamera) *object = kCameraPosition;
}
void _api__get_camera_direction(int32_t camera, int32_t* object) {
    if (camera == kCamera) *object = kCameraDirection;
}
void _api__get_position(int32_t object, float* x, float* y, float* z) {
    if (object == kCameraPosition) put(x, y, z, 0, 0, kCameraZ);
    if (object == kCameraDirection) put(x, y, z, 0, 0, -1);
}

// Status and time.
void _api__pellor_get_is_on_air(uint8_t* on_air) {
    *on_air = 0;
}
void _api__pellor_get_is_post_recording(uint8_t* recording) {
    *recording = 0;
}
void _api__pellor_get_post_current_time(float* seconds) {
    *seconds = 0;
}
void _api__pellor_get_retrace_counter(int32_t* counter) {
    *counter = retrace_counter;
}
void _api__pellor_get_refreshrate(double* seconds_per_frame) {
    *seconds_per_frame = kSecondsPerFrame;
}

// OpenGL: a real host passes each call on to its own context; this one counts corners and takes in what it is sent.
void ormixGL_glBegin(unsigned mode) {
    inside_quads = mode == GL_QUADS;
}
void ormixGL_glEnd(void) {
    inside_quads = false;
}
void ormixGL_glVertex3fv(const float* xyz) {
    corners += inside_quads;
    take_in_numbers(xyz, 3);
}
void ormixGL_glVertex3f(float x, float y, float z) {
    const float xyz[3] = {x, y, z};
    ormixGL_glVertex3fv(xyz);
}
void ormixGL_glDrawArrays(unsigned mode, int first, int count) {
    corners += mode == GL_QUADS ? count : 0;
    const auto begin = static_cast<size_t>(first), length = static_cast<size_t>(count);
    if (vertex_array != nullptr) take_in_numbers(vertex_array + 3 * begin, 3 * length);
    if (color_array != nullptr) take_in(color_array + 4 * begin, 4 * length);
}
void ormixGL_glColor4f(float r, float g, float b, float a) {
    const float rgba[4] = {r, g, b, a};
    take_in_numbers(rgba, 4);
}
void ormixGL_glColor4ub(unsigned char r, unsigned char g, unsigned char b, unsigned char a) {
    const unsigned char rgba[4] = {r, g, b, a};
    take_in(rgba, sizeof rgba);
}
void ormixGL_glTexCoord2s(short, short) {}
void ormixGL_glVertexPointer(int, unsigned, int, const void* array) {
    vertex_array = static_cast<const float*>(array);
}
void ormixGL_glColorPointer(int, unsigned, int, const void* array) {
    color_array = static_cast<const uint8_t*>(array);
}
void ormixGL_glTexCoordPointer(int, unsigned, int, const void*) {}
void ormixGL_glEnableClientState(unsigned) {}
void ormixGL_glDisableClientState(unsigned) {}
void ormixGL_glEnable(unsigned) {}
void ormixGL_glDisable(unsigned) {}
void ormixGL_glDepthMask(unsigned char) {}
void ormixGL_glHint(unsigned, unsigned) {}
void ormixGL_glLineWidth(float) {}
void ormixGL_glPointSize(float) {}
void ormixGL_glMatrixMode(unsigned) {}
void ormixGL_glLoadIdentity(void) {}
void ormixGL_glPushMatrix(void) {}
void ormixGL_glPopMatrix(void) {}
void ormixGL_glMultMatrixf(const float*) {}
void ormixGL_glTranslatef(float, float, float) {}

namespace {

[[noreturn]] void fail(const std::string& message) {
    std::fprintf(stderr, "host: %s\n", message.c_str());
    std::exit(2);
}

void set_parameter(const std::string& assignment) {
    const size_t equals = assignment.find('=');
    for (Parameter& parameter : parameters) {
        if (equals == std::string::npos || assignment.compare(0, equals, parameter.name) != 0) continue;
        const std::string value = assignment.substr(equals + 1);
        if (parameter.kind == Kind::kWhole) parameter.bits = static_cast<uint32_t>(std::atoi(value.c_str()));
        if (parameter.kind == Kind::kNumber)
            parameter.bits = std::bit_cast<uint32_t>(std::strtof(value.c_str(), nullptr));
        if (parameter.kind == Kind::kText) parameter.text = value.substr(0, parameter.longest);
        return;
    }
    fail("'" + assignment + "' is not parameter=value with a parameter listed above");
}

// A slot has 32 bits for the address of a text on every platform.
uint32_t low_copy(const Parameter& parameter) {
    void* memory = memory_below_4_gib(parameter.longest + 1);
    if (memory == nullptr) fail("no memory below 4 GiB for a text");
    std::memcpy(memory, parameter.text.c_str(), parameter.text.size() + 1);
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(memory));
}

void* find_symbol(void* library, const char* name) {
    void* symbol = exported_function(library, name);
    if (symbol == nullptr) fail(std::string(name) + " is missing: a plug-in exports all eight entry points");
    return symbol;
}

}  // namespace

// An entry point with the type that the header gives it.
#define ENTRY_POINT(name) reinterpret_cast<decltype(&name)>(find_symbol(library, #name))

int main(int argc, char** argv) {
    if (argc < 2) fail("usage: tovu_sample_host PLUGIN [parameter=value ...]");
    std::string error;
    void* library = open_library(argv[1], error);
    if (library == nullptr) fail(error);
    const auto init = ENTRY_POINT(PLUGIN_INIT);
    const auto init_function = ENTRY_POINT(PLUGIN_INIT_FUNCTION);
    const auto cleanup_function = ENTRY_POINT(PLUGIN_CLEANUP_FUNCTION);
    const auto new_geom = ENTRY_POINT(PLUGIN_NEW_GEOM);
    const auto render_opengl = ENTRY_POINT(PLUGIN_RENDER_OPENGL);
    // This host changes no parameter while it runs, presses no button and has no second plug-in that sends requests.
    for (const char* unused : {"PLUGIN_CHANGED_CALLBACK", "PLUGIN_EXEC_ACTION", "PLUGIN_DISPATCHER_CALLBACK"})
        find_symbol(library, unused);

    if (init() != 0) fail("the plug-in did not register");
    for (int i = 2; i < argc; ++i) set_parameter(argv[i]);

    // The instance's block has the registered size, is aligned to 8 bytes and begins with the parameters' slots.
    std::vector<uint64_t> block((static_cast<size_t>(block_size) + 7) / 8);
    const auto slots = reinterpret_cast<uint32_t*>(block.data());
    if (block_size < static_cast<int32_t>(4 * parameters.size())) fail("the block has no room for the slots");
    for (size_t i = 0; i < parameters.size(); ++i)
        slots[i] = parameters[i].kind == Kind::kText ? low_copy(parameters[i]) : parameters[i].bits;
    std::srand(1);  // plug-ins draw from `rand`: the same seed gives the same smoke
    init_function(block.data());

    for (int frame = 1; frame <= 100; ++frame) {
        ++retrace_counter;  // above 0 from the first frame on; plug-ins take an unchanged counter for the same frame
        corners = 0;
        new_geom(block.data(), 0);
        render_opengl(block.data(), 0, 1.0f);
    }
    std::printf("after 100 frames: bounding box %.3f %.3f %.3f to %.3f %.3f %.3f, %d quads\n",
                static_cast<double>(box[0]), static_cast<double>(box[1]), static_cast<double>(box[2]),
                static_cast<double>(box[3]), static_cast<double>(box[4]), static_cast<double>(box[5]), corners / 4);
    std::printf("digest %016llx\n", static_cast<unsigned long long>(digest));
    cleanup_function(block.data());
    close_library(library);  // every instance is cleaned up
    return 0;
}
