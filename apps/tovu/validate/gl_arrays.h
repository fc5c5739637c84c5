// The arrays that glDrawArrays reads: where they lie, and what is in them.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace tovu::validate {

struct ClientArray {
    const char* name;
    unsigned int code;
    bool enabled = false;
    int size = 0;  // numbers of a vertex
    unsigned int type = 0;
    int stride = 0;
    const void* pointer = nullptr;
    uint64_t progress = 0;  // SharedOutcome::progress when the pointer was set
};

/// Takes what a gl...Pointer function was given. call: its name. smallest: size that it takes. What OpenGL refuses is a
/// finding of gl.pass.
void set_pointer(ClientArray& array, const char* call, int smallest, std::initializer_list<unsigned int> types,
                 int size, unsigned int type, int stride, const void* pointer);

/// Whether the vertices from `first` on can be read. A finding of gl.arrays tells why not.
bool check_array(const ClientArray& array, int first, int count);

/// Numbers that are not finite are findings of gl.values. The array can be read.
void check_array_values(const ClientArray& array, int first, int count);

/// Puts the vertices into the call log, as one number. The array can be read.
void record_array(const ClientArray& array, int first, int count);

/// A finding of gl.values where one of the numbers that `call` was given is not finite.
void check_finite(const char* call, std::initializer_list<float> numbers);

}  // namespace tovu::validate
