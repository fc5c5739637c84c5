/* Shared by hosts and plug-ins: the eight functions that a geometry plug-in exports. C11 and C++. */
#ifndef TOVU_HOST_ENTRY_POINTS_H
#define TOVU_HOST_ENTRY_POINTS_H

#include <stdint.h>

#if defined(__GNUC__)
#define TOVU_PLUGIN_EXPORT __attribute__((visibility("default")))
#else
#define TOVU_PLUGIN_EXPORT
#endif

#ifdef __cplusplus
#define TOVU_NOEXCEPT noexcept
extern "C" {
#else
#define TOVU_NOEXCEPT
#endif

/*
 * A plug-in library exports exactly these. The host calls them from one thread, one at a time; a dispatcher call may
 * arrive while another plug-in's entry point is running. `instance` is the block of the size that the plug-in
 * registered, aligned to 8, with the current parameter values in its first 32-bit slots in the order of their
 * registration. The host owns the block and keeps it at its address from PLUGIN_INIT_FUNCTION until
 * PLUGIN_CLEANUP_FUNCTION has returned. No exception may leave.
 */

/** Registers the plug-in. Called once, when the library is loaded, before anything else. Returns 0. */
TOVU_PLUGIN_EXPORT int32_t PLUGIN_INIT(void) TOVU_NOEXCEPT;

/**
 * Builds an instance in its block; the parameter slots are filled already and are left alone. First call for the block,
 * whose bytes behind the slots may be anything.
 */
TOVU_PLUGIN_EXPORT void PLUGIN_INIT_FUNCTION(void* instance) TOVU_NOEXCEPT;

/** Frees all that the instance owns, and detaches it from whatever it is attached to. Last call for the block. */
TOVU_PLUGIN_EXPORT void PLUGIN_CLEANUP_FUNCTION(void* instance) TOVU_NOEXCEPT;

/** The value of the parameter with this index (0-based, in the order of registration) has changed. Between frames. */
TOVU_PLUGIN_EXPORT void PLUGIN_CHANGED_CALLBACK(void* instance, int32_t parameter_index) TOVU_NOEXCEPT;

/** The push button registered with this action number was pressed. Between frames; other numbers are ignored. */
TOVU_PLUGIN_EXPORT void PLUGIN_EXEC_ACTION(void* instance, int32_t action) TOVU_NOEXCEPT;

/** A new frame: called once a frame and instance, before the frame's passes. Returns 1. */
TOVU_PLUGIN_EXPORT uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t unused) TOVU_NOEXCEPT;

/**
 * Draws the instance into the current OpenGL context: once per pass.
 * render_flags: bit 0 set asks for a reduced pass, which leaves colours and state to the host. opacity: 0 to 1.
 * Returns 1.
 */
TOVU_PLUGIN_EXPORT uint8_t PLUGIN_RENDER_OPENGL(void* instance, int32_t render_flags, float opacity) TOVU_NOEXCEPT;

/**
 * A request from another plug-in, passed on by `_api__geom_dispatcher`.
 * request: a four-character code, first character in the top byte; unknown ones are ignored. data, reply: as the
 * request says; `reply` is the address of the slot that the answer is written to.
 */
TOVU_PLUGIN_EXPORT void PLUGIN_DISPATCHER_CALLBACK(void* instance, int32_t request, void* data,
                                                   void* reply) TOVU_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
