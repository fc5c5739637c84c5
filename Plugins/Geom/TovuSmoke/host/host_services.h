/* Shared by hosts and plug-ins: the functions that a host exports and a plug-in imports by name. C11 and C++. */
#ifndef TOVU_HOST_HOST_SERVICES_H
#define TOVU_HOST_HOST_SERVICES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A handle is an int32_t that identifies an object of the host; -1 means no object. A plug-in does not own or release
 * handles. An object can be removed between any two calls: test the handle with `_api__object_valid` before use.
 * For an unknown object the host leaves the out values unchanged, so set each of them before the call.
 * Matrices are 16 floats in OpenGL's column order. Angles are degrees. Texts are NUL-terminated UTF-8; the host copies
 * the texts that it keeps during the call. Call these functions from the host's thread, inside an entry point.
 */

/** Kinds of objects: the `type` of a lookup. */
enum {
    TOVU_OBJECT_CONTAINER = 2, /**< a container of the scene */
    TOVU_OBJECT_GEOMETRY = 50, /**< the geometry of a container */
    TOVU_OBJECT_CAMERA = 62    /**< a camera */
};

/*
 * ---- Registration: inside PLUGIN_INIT only. The order of the parameters is the order of their 32-bit slots. ----
 * name: identifier in scene files and presets, unique in the plug-in. label: shown to the user. initial: the default
 * value. Ranges include both ends.
 */

/** Names the plug-in. The first call of PLUGIN_INIT. */
void pelRegisterPlugin(const char* name);
/** Kind of plug-in: 1, a geometry. */
void pelRegisterPluginType(int32_t type);
/** An integer from minimum to maximum; the slot is an int32_t. */
void pelRegisterParameterInt(const char* name, const char* label, int32_t initial, int32_t minimum, int32_t maximum);
/** A number from minimum to maximum; the slot is a float. */
void pelRegisterParameterFloat(const char* name, const char* label, float initial, float minimum, float maximum);
/** A switch; the slot is an int32_t: 0 is off, every other value on. */
void pelRegisterParameterBool(const char* name, const char* label, int32_t initial);
/**
 * A text of at most `max_length` bytes; the slot is an uint32_t, the address of the host's NUL-terminated buffer (see
 * parameter_slots.h). A plug-in that writes a text into the buffer writes fewer than `max_length` bytes and a NUL.
 * `columns` is the width of the text's field in characters; `flags` is 0.
 */
void pelRegisterParameterString(const char* name, const char* label, const char* initial, int32_t columns,
                                int32_t max_length, int32_t flags);
/** One of several choices, an array of texts that ends with a null pointer; the slot is the 0-based index, int32_t. */
void pelRegisterParameterRadio(const char* name, const char* label, int32_t initial, const char* const* choices);
/** The name of a container, empty for none; the slot is as for a text. */
void pelRegisterParameterContainer(const char* name, const char* label, const char* initial);
/** The name of an image, empty for none; the slot is as for a text. */
void pelRegisterParameterImage(const char* name, const char* label, const char* initial);
/** A line of text for the user; has no slot. */
void pelRegisterInfoText(const char* name, const char* text);
/** A button that calls PLUGIN_EXEC_ACTION with `action`; has no slot. */
void pelRegisterPushButton(const char* name, const char* label, int32_t action);
/** Size of an instance's block in bytes, the parameter slots included: at least four times their number. */
void pelRegisterTotalSize(int32_t bytes);
/** 1 when the plug-in has levels of detail, else 0. */
void pelRegisterUseLOD(int32_t use);
/** 1 when the plug-in registers profiling events, else 0. */
void pelRegisterUseEvents(int32_t use);
/** A section of the plug-in's work that the host can time. Returns the event's handle. `flags` is 0. */
int32_t pelRegisterEvent(const char* name, int32_t flags);

/* ---- Profiling: any time after registration. ---- */

/** Begins a section. Sections can be nested. End each one in the entry point that begins it. */
void pelEventStart(int32_t event);
/** Ends the section of this event that began last. */
void pelEventEnd(int32_t event);

/* ---- Scene objects: in the entry points that are given an instance. ---- */

/**
 * An object of the instance that is being called: its geometry for "GEOM" and TOVU_OBJECT_GEOMETRY, the container that
 * carries it for "" and TOVU_OBJECT_CONTAINER. -1 if there is none.
 */
int32_t _api__get_objectid_local(const char* name, int32_t type);
/** The object with this name in the scene; `sub_name` is "". -1 if there is none. */
int32_t _api__get_objectid(const char* name, const char* sub_name, int32_t type);
/** The object with this number, which users write after a '#'. -1 if there is none. */
int32_t _api__get_objectid_from_objectid(int32_t number);
/** Nonzero while the object exists; 0 for -1. */
int32_t _api__object_valid(int32_t object);
/** Tells the host that the geometry changed and must be redrawn; usually the last call of PLUGIN_NEW_GEOM. */
void _api__set_geom_changed(int32_t geometry);
/** Position in the world, world units. */
void _api__container_get_absolute_position(int32_t container, float* x, float* y, float* z);
/** Rotation in the world, degrees about X, Y and Z; the matrix is Rx · Ry · Rz. */
void _api__container_get_absolute_rotation(int32_t container, float* x, float* y, float* z);
/** Scaling in the world along the container's own axes, 1 for none. */
void _api__container_get_absolute_scaling(int32_t container, float* x, float* y, float* z);
/** From the container's coordinates to the world's. matrix: 16 floats. */
void _api__container_get_transformation_matrix(int32_t container, float* matrix);
/** From the world's coordinates to the container's. matrix: 16 floats. */
void _api__container_get_inverse_matrix(int32_t container, float* matrix);
/** Sets the bounding box of the container's geometry, in the container's coordinates. */
void _api__container_set_bounding_box(int32_t container, float min_x, float min_y, float min_z, float max_x,
                                      float max_y, float max_z);
/** The container's geometry; -1 if it has none. */
void _api__container_get_geometry(int32_t container, int32_t* geometry);
/**
 * Sends a request to the plug-in of a geometry, which receives it in PLUGIN_DISPATCHER_CALLBACK.
 * Returns nonzero if a plug-in received the call, even one that ignores the request; 0 if the geometry does not belong
 * to a live plug-in. The request defines `data` and `reply`; the host forwards them without reading them.
 */
int32_t _api__geom_dispatcher(int32_t geometry, int32_t request, void* data, void* reply);

/*
 * ---- Mesh access: in the entry points that are given an instance. ----
 * Cursors refer to a mesh or a vertex. The host owns the access and the cursors; they are valid until the frame ends.
 */

/** The level of detail in use: an argument of `_api__get_geom_geomod`. */
void _api__get_geom_detail(int32_t geometry, int32_t* detail);
/** Access to the geometry's meshes; `kind` is 2. *mesh_access is 0 if there is none. */
void _api__get_geom_geomod(int32_t geometry, int32_t kind, int32_t detail, int32_t* mesh_access);
/** Begins an access. Call it before the functions below. */
void _api__geomod_init(int32_t mesh_access);
/**
 * Total number of vertices, number of meshes, and three flags that only the host uses. If there are more meshes than
 * vertices, a reader may ignore the meshes from index `vertex_count` on.
 */
void _api__geomod_get_info(int32_t mesh_access, int32_t* vertex_count, int32_t* mesh_count, uint8_t* flag_0,
                           uint8_t* flag_1, uint8_t* flag_2);
/** Sets a cursor to the mesh with this 0-based index, below the mesh count. */
void _api__geomod_goto_mesh(int32_t mesh_access, int32_t mesh_index, int32_t* mesh_cursor);
/** Moves a cursor to the next mesh. */
void _api__geomod_next_mesh(int32_t mesh_access, int32_t* mesh_cursor);
/** Number of vertices of the mesh at the cursor. */
void _api__geomod_get_num_mesh_verices(int32_t mesh_access, int32_t mesh_cursor, int32_t* vertex_count);
/** Sets a cursor to the vertex with this 0-based index of the mesh at `mesh_cursor`. */
void _api__geomod_goto_vertex(int32_t mesh_access, int32_t mesh_cursor, int32_t vertex_index, int32_t* vertex_cursor);
/** Moves a cursor to the next vertex. */
void _api__geomod_next_vertex(int32_t mesh_access, int32_t mesh_cursor, int32_t* vertex_cursor);
/** The vertex at the cursor, in the container's coordinates. */
void _api__geomod_get_vertex(int32_t mesh_access, int32_t vertex_cursor, float* x, float* y, float* z);

/* ---- Images: in the entry points that are given an instance. ---- */

/** The image with this name; -1 if there is none. */
int32_t _api__get_image_objectid(const char* name);
/** Size in pixels. */
void _api__get_image_size(int32_t image, int32_t* width, int32_t* height);
/** Format as one of OpenGL's constants: GL_ALPHA, GL_RGB, GL_RGBA, GL_LUMINANCE, GL_LUMINANCE_ALPHA. */
void _api__get_image_format(int32_t image, int32_t* format);
/**
 * The pixels: one byte per channel, rows without padding, the first row first. The host decides whether that is the
 * top or the bottom row. Null if the host has no pixels. The host owns the memory. It is valid until the entry point
 * returns or calls `_api__geom_dispatcher`: query it again after that call.
 */
void _api__get_image_data(int32_t image, uint8_t** pixels);

/* ---- Cameras: in the entry points that are given an instance. ---- */

/** The camera that renders the scene, with -1, "RENDERCAMERA" and TOVU_OBJECT_CAMERA; -1 if there is none. */
int32_t _api__get_cameraid(int32_t scene, const char* name, int32_t type);
/** Rotation about the world's Y, degrees, positive to the left; at 0 the camera looks along -Z. */
void _api__get_camera_pan(int32_t camera, float* degrees);
/** Rotation about the camera's X after the pan, degrees, positive upward. */
void _api__get_camera_tilt(int32_t camera, float* degrees);
/** From the world's coordinates to the camera's. matrix: 16 floats. */
void _api__get_camera_view_matrix(int32_t camera, float* matrix);
/** A handle for `_api__get_position`, which returns the camera's position in the world. */
void _api__get_camera_position(int32_t camera, int32_t* object);
/** A handle for `_api__get_position`, which returns the camera's viewing direction, of length 1. */
void _api__get_camera_direction(int32_t camera, int32_t* object);
/** The three components of a camera's position or direction, for the handle of one of the two functions above. */
void _api__get_position(int32_t object, float* x, float* y, float* z);

/* ---- Status and time: in the entry points that are given an instance. ---- */

/** *on_air: nonzero while the picture goes out live. */
void _api__pellor_get_is_on_air(uint8_t* on_air);
/** *recording: nonzero while a clip is recorded frame by frame. The recording has a clock of its own. */
void _api__pellor_get_is_post_recording(uint8_t* recording);
/** Time on the recording's clock, seconds. */
void _api__pellor_get_post_current_time(float* seconds);
/** A frame number: above 0, and different in every frame. Calls with the same number belong to the same frame. */
void _api__pellor_get_retrace_counter(int32_t* counter);
/** Seconds per frame. */
void _api__pellor_get_refreshrate(double* seconds_per_frame);

#ifdef __cplusplus
}
#endif

#endif
