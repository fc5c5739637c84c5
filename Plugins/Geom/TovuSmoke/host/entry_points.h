/* Shared by hosts and plug-ins: the eight functions that a geometry plug-in exports. C11 and C++. */
#ifndef TOVU_HOST_ENTRY_POINTS_H
#define TOVU_HOST_ENTRY_POINTS_H

#include <stdint.h>

#if defined(_WIN32)
#define TOVU_PLUGIN_EXPORT __declspec(dllexport)
#elif defined(__GNUC__)
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
 * arrive while another plug-in's entry point is running. `instance` is the address of the instance's block, which has
 * the size that the plug-in registered and is aligned to 8 bytes. It starts with the current parameter values in 32-bit
 * slots, in the order of registration. The host owns the block and does not move it from PLUGIN_INIT_FUNCTION until
 * PLUGIN_CLEANUP_FUNCTION has returned. Exceptions must not leave these functions.
 */

/** Registers the plug-in. Called once, when the library is loaded, before anything else. Returns 0. */
TOVU_PLUGIN_EXPORT int32_t PLUGIN_INIT(void) TOVU_NOEXCEPT;

/**
 * Builds an instance in its block: the first call for the block. The host has filled the parameter slots; leave them
 * unchanged. The bytes after the slots are undefined.
 */
TOVU_PLUGIN_EXPORT void PLUGIN_INIT_FUNCTION(void* instance) TOVU_NOEXCEPT;

/** Frees all that the instance owns and detaches it from other plug-ins. The last call for the block. */
TOVU_PLUGIN_EXPORT void PLUGIN_CLEANUP_FUNCTION(void* instance) TOVU_NOEXCEPT;

/** The value of the parameter with this index (0-based, in the order of registration) has changed. Called between
 * frames. */
TOVU_PLUGIN_EXPORT void PLUGIN_CHANGED_CALLBACK(void* instance, int32_t parameter_index) TOVU_NOEXCEPT;

/** The push button with this action number was pressed. Called between frames. Ignore unknown numbers. */
TOVU_PLUGIN_EXPORT void PLUGIN_EXEC_ACTION(void* instance, int32_t action) TOVU_NOEXCEPT;

/** Computes a new frame. Called once per frame and instance, before the frame's passes. Returns 1. */
TOVU_PLUGIN_EXPORT uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t unused) TOVU_NOEXCEPT;

/**
 * Draws the instance in the current OpenGL context. Called once per pass.
 * render_flags: bit 0 requests a reduced pass, in which the host sets colours and state. opacity: 0 to 1.
 * Returns 1.
 */
TOVU_PLUGIN_EXPORT uint8_t PLUGIN_RENDER_OPENGL(void* instance, int32_t render_flags, float opacity) TOVU_NOEXCEPT;

/**
 * A request from another plug-in, forwarded by `_api__geom_dispatcher`.
 * request: a four-character code, first character in the top byte. Ignore unknown codes. data, reply: as the request
 * defines them; `reply` is the address of the slot for the answer.
 */
TOVU_PLUGIN_EXPORT void PLUGIN_DISPATCHER_CALLBACK(void* instance, int32_t request, void* data,
                                                   void* reply) TOVU_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
