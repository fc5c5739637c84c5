/* Shared by hosts and plug-ins: the functions that a host exports and a plug-in imports by name. C11 and C++. */
#ifndef TOVU_HOST_HOST_SERVICES_H
#define TOVU_HOST_HOST_SERVICES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A handle is an int32_t that names an object of the host; -1 is none. Handles are never owned or released by a
 * plug-in, and the object behind one may go away between any two calls: ask `_api__object_valid` where you use it.
 * A host that does not know the object leaves out values as they were, so set each of them before the call.
 * Matrices are 16 floats in OpenGL's column order. Angles are degrees. Texts are NUL-terminated UTF-8; the host copies
 * what it keeps during the call. Call from the host's thread, inside an entry point.
 */

/** Kinds of object, as the `type` of a look-up. */
enum {
    TOVU_OBJECT_CONTAINER = 2, /**< a container of the scene */
    TOVU_OBJECT_GEOMETRY = 50, /**< the geometry of a container */
    TOVU_OBJECT_CAMERA = 62    /**< a camera */
};

/*
 * ---- Registration: inside PLUGIN_INIT only. The order of the parameters is the order of their 32-bit slots. ----
 * name: what scene files and presets know it by, unique in the plug-in. label: what its user reads. initial: the value
 * before anyone sets one. Ranges include both ends.
 */

/** Names the plug-in. The first call of PLUGIN_INIT. */
void pelRegisterPlugin(const char* name);
/** Kind of plug-in: 1, a geometry. */
void pelRegisterPluginType(int32_t type);
/** A whole number held to minimum…maximum; the slot is an int32_t. */
void pelRegisterParameterInt(const char* name, const char* label, int32_t initial, int32_t minimum, int32_t maximum);
/** A number held to minimum…maximum; the slot is a float. */
void pelRegisterParameterFloat(const char* name, const char* label, float initial, float minimum, float maximum);
/** A switch; the slot is an int32_t, 0 is off, anything else on. */
void pelRegisterParameterBool(const char* name, const char* label, int32_t initial);
/**
 * A text of at most `max_length` bytes; the slot is an uint32_t, the address of the host's NUL-terminated buffer (see
 * parameter_slots.h). A plug-in that writes an answer into it writes fewer than `max_length` bytes and a NUL.
 * `columns` is the width of the text's field in characters; `flags` is 0.
 */
void pelRegisterParameterString(const char* name, const char* label, const char* initial, int32_t columns,
                                int32_t max_length, int32_t flags);
/** One of several choices, a list of texts closed by a null pointer; the slot is the 0-based position as int32_t. */
void pelRegisterParameterRadio(const char* name, const char* label, int32_t initial, const char* const* choices);
/** The name of a container, empty for none; the slot is as for a text. */
void pelRegisterParameterContainer(const char* name, const char* label, const char* initial);
/** The name of an image, empty for none; the slot is as for a text. */
void pelRegisterParameterImage(const char* name, const char* label, const char* initial);
/** A line of text for the user; occupies no slot. */
void pelRegisterInfoText(const char* name, const char* text);
/** A button that calls PLUGIN_EXEC_ACTION with `action`; occupies no slot. */
void pelRegisterPushButton(const char* name, const char* label, int32_t action);
/** Size of an instance's block in bytes, the parameter slots included: at least four times their number. */
void pelRegisterTotalSize(int32_t bytes);
/** 1 when the plug-in has levels of detail, else 0. */
void pelRegisterUseLOD(int32_t use);
/** 1 when the plug-in registers profiling events, else 0. */
void pelRegisterUseEvents(int32_t use);
/** A section of the plug-in's work that the host may time. Returns the event's handle. `flags` is 0. */
int32_t pelRegisterEvent(const char* name, int32_t flags);

/* ---- Profiling: any time after registration. ---- */

/** A section begins. Sections nest; every start has its end within the same entry point. */
void pelEventStart(int32_t event);
/** The section begun last with this event ends. */
void pelEventEnd(int32_t event);

/* ---- Scene objects: in the entry points that are given an instance. ---- */

/**
 * An object of the instance that is being called: its geometry with "GEOM" and TOVU_OBJECT_GEOMETRY, the container
 * that carries it with "" and TOVU_OBJECT_CONTAINER. -1 when there is none.
 */
int32_t _api__get_objectid_local(const char* name, int32_t type);
/** The object with this name in the scene; `sub_name` is "". -1 when there is none. */
int32_t _api__get_objectid(const char* name, const char* sub_name, int32_t type);
/** The object with this number, as users write it behind a '#'. -1 when there is none. */
int32_t _api__get_objectid_from_objectid(int32_t number);
/** Nonzero while the object exists; 0 for -1. */
int32_t _api__object_valid(int32_t object);
/** Tells the host that the geometry has changed and is to be drawn anew; usually last in PLUGIN_NEW_GEOM. */
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
/** Tells the host what the container's geometry fills, in the container's coordinates. */
void _api__container_set_bounding_box(int32_t container, float min_x, float min_y, float min_z, float max_x,
                                      float max_y, float max_z);
/** The container's geometry; -1 when it has none. */
void _api__container_get_geometry(int32_t container, int32_t* geometry);
/**
 * Hands a request to the plug-in behind a geometry, which receives it as PLUGIN_DISPATCHER_CALLBACK.
 * Returns nonzero when a plug-in took the call (whatever it made of it), 0 when the geometry is not a live plug-in's.
 * `data` and `reply` are the request's own; the host passes them on without reading them.
 */
int32_t _api__geom_dispatcher(int32_t geometry, int32_t request, void* data, void* reply);

/*
 * ---- Mesh access: in the entry points that are given an instance. ----
 * A cursor goes to a mesh, then from vertex to vertex; access and cursors are the host's, and good until the frame
 * ends.
 */

/** The level of detail in use, to be handed to `_api__get_geom_geomod`. */
void _api__get_geom_detail(int32_t geometry, int32_t* detail);
/** Access to the geometry's meshes; `kind` is 2. *mesh_access is 0 when there is none. */
void _api__get_geom_geomod(int32_t geometry, int32_t kind, int32_t detail, int32_t* mesh_access);
/** Begins an access; before any of the calls below. */
void _api__geomod_init(int32_t mesh_access);
/**
 * Vertices in all meshes together, number of meshes, and three flags of the host's own. A reader may take no more
 * meshes than there are vertices.
 */
void _api__geomod_get_info(int32_t mesh_access, int32_t* vertex_count, int32_t* mesh_count, uint8_t* flag_0,
                           uint8_t* flag_1, uint8_t* flag_2);
/** Sets a cursor to the mesh with this 0-based index, below the mesh count. */
void _api__geomod_goto_mesh(int32_t mesh_access, int32_t mesh_index, int32_t* mesh_cursor);
/** Moves a cursor to the next mesh. */
void _api__geomod_next_mesh(int32_t mesh_access, int32_t* mesh_cursor);
/** Vertices of the mesh under the cursor. */
void _api__geomod_get_num_mesh_verices(int32_t mesh_access, int32_t mesh_cursor, int32_t* vertex_count);
/** Sets a cursor to the vertex with this 0-based index of the mesh under `mesh_cursor`. */
void _api__geomod_goto_vertex(int32_t mesh_access, int32_t mesh_cursor, int32_t vertex_index, int32_t* vertex_cursor);
/** Moves a cursor to the next vertex. */
void _api__geomod_next_vertex(int32_t mesh_access, int32_t mesh_cursor, int32_t* vertex_cursor);
/** The vertex under the cursor, in the container's coordinates. */
void _api__geomod_get_vertex(int32_t mesh_access, int32_t vertex_cursor, float* x, float* y, float* z);

/* ---- Images: in the entry points that are given an instance. ---- */

/** The image with this name; -1 when there is none. */
int32_t _api__get_image_objectid(const char* name);
/** Size in pixels. */
void _api__get_image_size(int32_t image, int32_t* width, int32_t* height);
/** Format as one of OpenGL's constants: GL_ALPHA, GL_RGB, GL_RGBA, GL_LUMINANCE, GL_LUMINANCE_ALPHA. */
void _api__get_image_format(int32_t image, int32_t* format);
/**
 * The pixels: one byte per channel, rows without padding, the first row first; which edge of the picture that is, is
 * the host's choice. Null where the host holds none. The memory is the host's and stays only until the entry point that
 * asked for it returns, or sends a request to another plug-in: ask anew after `_api__geom_dispatcher`.
 */
void _api__get_image_data(int32_t image, uint8_t** pixels);

/* ---- Cameras: in the entry points that are given an instance. ---- */

/** The camera that renders the scene, with -1, "RENDERCAMERA" and TOVU_OBJECT_CAMERA; -1 when there is none. */
int32_t _api__get_cameraid(int32_t scene, const char* name, int32_t type);
/** Turn about the world's Y, degrees, positive to the left; 0 looks along -Z. */
void _api__get_camera_pan(int32_t camera, float* degrees);
/** Turn about the camera's X after the pan, degrees, positive upward. */
void _api__get_camera_tilt(int32_t camera, float* degrees);
/** From the world's coordinates to the camera's. matrix: 16 floats. */
void _api__get_camera_view_matrix(int32_t camera, float* matrix);
/** A handle that `_api__get_position` turns into the camera's position in the world. */
void _api__get_camera_position(int32_t camera, int32_t* object);
/** A handle that `_api__get_position` turns into the direction in which the camera looks, of length 1. */
void _api__get_camera_direction(int32_t camera, int32_t* object);
/** The three numbers behind such a handle. */
void _api__get_position(int32_t object, float* x, float* y, float* z);

/* ---- Status and time: in the entry points that are given an instance. ---- */

/** *on_air: nonzero while the picture goes out live. */
void _api__pellor_get_is_on_air(uint8_t* on_air);
/** *recording: nonzero while a clip is recorded frame by frame, by a clock that runs apart from the live frames. */
void _api__pellor_get_is_post_recording(uint8_t* recording);
/** That clock, seconds. */
void _api__pellor_get_post_current_time(float* seconds);
/** Changes by at least one from frame to frame, above 0 from the first on; the same count is the same frame. */
void _api__pellor_get_retrace_counter(int32_t* counter);
/** Seconds per frame. */
void _api__pellor_get_refreshrate(double* seconds_per_frame);

#ifdef __cplusplus
}
#endif

#endif
