// Checks the addresses and the content of the arrays that glDrawArrays reads.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace tovu::validate {

struct ClientArray {
    const char* name;
    unsigned int code;
    bool enabled = false;
    int size = 0;  // numbers per vertex
    unsigned int type = 0;
    int stride = 0;
    const void* pointer = nullptr;
    uint64_t progress = 0;  // SharedOutcome::progress when the pointer was set
};

/// Stores the arguments of a gl...Pointer function. call: its name. smallest: smallest accepted size. Arguments that
/// OpenGL rejects are findings of gl.pass.
void set_pointer(ClientArray& array, const char* call, int smallest, std::initializer_list<unsigned int> types,
                 int size, unsigned int type, int stride, const void* pointer);

/// True if `count` vertices from `first` on can be read. Otherwise a finding of gl.arrays says why not.
bool check_array(const ClientArray& array, int first, int count);

/// Reports numbers that are not finite as findings of gl.values. The array must be readable.
void check_array_values(const ClientArray& array, int first, int count);

/// Adds a hash of the vertices to the call log. The array must be readable.
void record_array(const ClientArray& array, int first, int count);

/// Reports arguments of `call` that are not finite as findings of gl.values.
void check_finite(const char* call, std::initializer_list<float> numbers);

}  // namespace tovu::validate
