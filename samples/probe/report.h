// The checks and their results.
#pragma once

#include <cstddef>
#include <cstdio>

#ifdef __MINGW_PRINTF_FORMAT  // mingw has two, and C++ uses the one of the standard
#define PROBE_PRINTF __MINGW_PRINTF_FORMAT
#else
#define PROBE_PRINTF printf
#endif

namespace probe {

// Name of the constant, name in the report, what is right, and why the check may not have run.
#define PROBE_CHECKS(CHECK)                                                                                            \
    CHECK(init_once, "init.once", "call PLUGIN_INIT once, before all else", "")                                        \
    CHECK(init_texts, "init.texts", "copy each text while it is registered", "the host made no instance")              \
    CHECK(call_thread, "call.thread", "call all entry points from one thread", "")                                     \
    CHECK(call_order, "call.order",                                                                                    \
          "call PLUGIN_INIT_FUNCTION once for a block, then the others, PLUGIN_CLEANUP_FUNCTION once and last",        \
          "the host made no instance")                                                                                 \
    CHECK(call_nested, "call.nested", "call when the call before has returned; only a request arrives inside another", \
          "the host made no instance")                                                                                 \
    CHECK(block_address, "block.address", "align the block to 8 bytes and keep it at its address",                     \
          "the host made no instance")                                                                                 \
    CHECK(block_kept, "block.kept", "allocate pelRegisterTotalSize bytes and write the slots alone",                   \
          "the host made no second call")                                                                              \
    CHECK(slot_values, "slot.values", "a slot of 32 bits for each parameter, in order, its value in its range",        \
          "the host made no instance")                                                                                 \
    CHECK(text_readable, "text.readable", "keep each text where the 32 bits of its slot lead, below 4 GiB",            \
          "the host made no instance")                                                                                 \
    CHECK(text_ends, "text.ends", "at most max_length bytes of UTF-8 and a NUL", "no text is readable")                \
    CHECK(text_room, "text.room", "a buffer of max_length + 1 bytes that the plug-in may write an answer into",        \
          "no String is readable")                                                                                     \
    CHECK(change_index, "change.index", "the index counts parameters alone, from 0, and its slot has changed before",  \
          "the host announced no change")                                                                              \
    CHECK(change_between, "change.between", "change parameters and press buttons between frames",                      \
          "the host drew nothing after PLUGIN_NEW_GEOM")                                                               \
    CHECK(action_number, "action.number", "PLUGIN_EXEC_ACTION gets the number that the button was registered with",    \
          "the host pressed no button")                                                                                \
    CHECK(frame_counter, "frame.counter", "the retrace counter is above 0 and changes before each PLUGIN_NEW_GEOM",    \
          "the host ran no frame")                                                                                     \
    CHECK(frame_period, "frame.period", "_api__pellor_get_refreshrate gives the seconds of a frame, above 0",          \
          "the host ran no frame")                                                                                     \
    CHECK(frame_order, "frame.order",                                                                                  \
          "in each frame PLUGIN_NEW_GEOM of all instances, in the same order, then their passes",                      \
          "the host ran no frame")                                                                                     \
    CHECK(pass_opacity, "pass.opacity", "the opacity is 0 to 1", "the host drew nothing")                              \
    CHECK(object_local, "object.local",                                                                                \
          "the geometry and the container are those of the instance that is called, the same in each call",            \
          "the host made no instance")                                                                                 \
    CHECK(object_valid, "object.valid", "nonzero for an object that exists, 0 for -1", "the host made no instance")    \
    CHECK(object_none, "object.none", "-1 for what does not exist", "the host made no instance")                       \
    CHECK(out_values, "out.values", "leave out values as they are when asked about -1", "the host made no instance")   \
    CHECK(out_invalid, "out.invalid", "leave out values as they are when the object is not known",                     \
          "'questions' is not 'all'")                                                                                  \
    CHECK(matrix_inverse, "matrix.inverse", "the matrix times its inverse is the identity",                            \
          "no container with an inverse")                                                                              \
    CHECK(matrix_placement, "matrix.placement", "the matrix is position, then Rx, Ry, Rz, then scaling",               \
          "the host ran no frame")                                                                                     \
    CHECK(mesh_none, "mesh.none", "a plug-in's geometry gives the mesh access 0", "the host ran no frame")             \
    CHECK(mesh_counts, "mesh.counts", "the vertex count is that of all meshes together, and each vertex is finite",    \
          "'shape' names no container whose geometry has meshes")                                                      \
    CHECK(image_pixels, "image.pixels", "a size above 0, one of the five formats, and all rows readable, or null",     \
          "'picture' names no image")                                                                                  \
    CHECK(camera_view, "camera.view", "the view matrix leads the camera's position to 0 and its direction to -Z",      \
          "there is no camera")                                                                                        \
    CHECK(camera_angles, "camera.angles", "pan about Y to the left, then tilt upward, turn -Z into the direction",     \
          "there is no camera")                                                                                        \
    CHECK(dispatch_none, "dispatch.none", "0 for a geometry that is no plug-in's, its reply left alone",               \
          "the host ran no frame")                                                                                     \
    CHECK(dispatch_other, "dispatch.other", "pass code, data and reply on unchanged, and return nonzero",              \
          "'questions' is not 'all', or there is one instance only")                                                   \
    CHECK(random_range, "random.range", "rand gives 0 to RAND_MAX", "the host made no instance")                       \
    CHECK(gl_matrices, "gl.matrices",                                                                                  \
          "GL_MODELVIEW, which is the current one, is the container's, GL_PROJECTION is projection times view, the "   \
          "texture matrix scales by 1/32767",                                                                          \
          "no context of an OpenGL that the process has loaded was current in a pass")                                 \
    CHECK(gl_state, "gl.state",                                                                                        \
          "depth mask on; client arrays off; no array buffer, program or vertex array object; first texture unit",     \
          "no context of an OpenGL that the process has loaded was current in a pass")

enum Check {
#define CHECK(constant, name, right, why_not) constant,
    PROBE_CHECKS(CHECK)
#undef CHECK
};

/// The place of the next findings: the running entry point, its instance and frame. Numbers start at 1; 0 for none.
struct Place {
    const char* entry_point;
    int instance;
    int frame;
};
void set_place(const Place& place);
Place current_place();

/// Records that a check ran. If `holds` is false, the printf-style message describes the fault. The first fault of each
/// check is stored with its place, further ones are counted.
[[gnu::format(PROBE_PRINTF, 3, 4)]] void expect(Check check, bool holds, const char* message, ...);

/// True if a fault was found since the last report.
bool has_news();

/// Prints a line for each check that failed or did not run, then the verdict, on standard output.
/// verdict: receives a copy of the verdict, truncated to `capacity` bytes with the NUL, if `capacity` is above 0.
void print_report(char* verdict, size_t capacity);

}  // namespace probe
