// Functions of the operating system: platform_linux.cpp, platform_windows.cpp.
#pragma once

#include <cstddef>
#include <string>

/// Loads a plug-in library from a path. Null if it cannot be loaded, for example because a host function is missing;
/// `error` says why. It stays loaded until close_library.
void* open_library(const char* path, std::string& error);
void close_library(void* library);

/// The address of an exported function, null if there is none with this name.
void* exported_function(void* library, const char* name);

/// Memory for a text of `bytes` bytes, below 4 GiB; null if there is none. It is never freed.
void* memory_below_4_gib(size_t bytes);
