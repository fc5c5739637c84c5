// Counts the heap allocations of a program that is built with allocation_count.cpp, those of its plug-ins included.
#pragma once

/// Calls of malloc, calloc and realloc so far, of all libraries of the process; always 0 under the address sanitizer,
/// whose allocator is not replaced.
long allocation_count();
