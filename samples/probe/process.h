// Facts about the process from the operating system: process_linux.cpp, process_windows.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#define OPENGL_CALL __stdcall
#else
#define OPENGL_CALL
#endif

namespace probe {

/// The number of consecutive bytes from `address` on that the process may read (`access` 'r') or write ('w'), at most
/// `wanted`. Returns `wanted` if the system does not say.
size_t accessible_bytes(uintptr_t address, char access, size_t wanted);

/// A function of the OpenGL library that the process has loaded itself, with the calling convention OPENGL_CALL; null
/// if there is none. Loads no library.
void* loaded_opengl_function(const char* name);

}  // namespace probe
