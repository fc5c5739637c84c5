#include "gl_arrays.h"

#include <epoxy/gl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "elf_file.h"
#include "heap_watch.h"
#include "stage/call_log.h"
#include "watch.h"

namespace tovu::validate {
namespace {

size_t bytes_of_type(unsigned int type) {
    switch (type) {
        case GL_BYTE:
        case GL_UNSIGNED_BYTE:
            return 1;
        case GL_SHORT:
        case GL_UNSIGNED_SHORT:
            return 2;
        case GL_DOUBLE:
            return 8;
        default:
            return 4;
    }
}

size_t bytes_per_vertex(const ClientArray& array) {
    return static_cast<size_t>(array.size) * bytes_of_type(array.type);
}

size_t step_of(const ClientArray& array) {
    return array.stride > 0 ? static_cast<size_t>(array.stride) : bytes_per_vertex(array);
}

template <class Number>
float number_at(const char* place) {
    Number number;
    std::memcpy(&number, place, sizeof number);
    return static_cast<float>(number);
}

const char* vertex_at(const ClientArray& array, int index) {
    return static_cast<const char*>(array.pointer) + static_cast<size_t>(index) * step_of(array);
}

/// Why the bytes of the array must not be read; empty if they may.
std::string read_problem(const ClientArray& array, uintptr_t start, size_t bytes) {
    const auto here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    constexpr uintptr_t kStackReach = 8u << 20;
    if (start < here && here - start < kStackReach) return "lies on the stack of a function that has returned";
    if (start >= here && start - here < kStackReach && array.progress != watch().outcome->progress)
        return "lies on the stack of an earlier call";
    if (const HeapBlock* block = find_block(start)) {
        if (!block->is_live) return "was freed";
        if (start + bytes > block->address + block->bytes)
            return fmt::format("ends {} bytes after the block of {} bytes that it lies in",
                               start + bytes - block->address - block->bytes, block->bytes);
    }
    const SharedOutcome& outcome = *watch().outcome;
    if (start >= outcome.library_start && start < outcome.library_end) {
        const ElfSymbol* symbol = symbol_at(*watch().library, start - outcome.library_start);
        const uint64_t end = symbol ? outcome.library_start + symbol->value + symbol->bytes : 0;
        if (symbol && start + bytes > end)
            return fmt::format("ends {} bytes after '{}'", start + bytes - end, plain_name(symbol->name));
    }
    if (const size_t readable = readable_bytes(reinterpret_cast<const void*>(start), bytes); readable < bytes)
        return fmt::format("can be read for {} of {} bytes only", readable, bytes);
    return "";
}

}  // namespace

void set_pointer(ClientArray& array, const char* call, int smallest, std::initializer_list<unsigned int> types,
                 int size, unsigned int type, int stride, const void* pointer) {
    if (size < smallest || size > 4)
        fail("gl.pass", fmt::format("{} was given {} numbers a vertex", call, size), fmt::format("{} to 4", smallest));
    if (std::find(types.begin(), types.end(), type) == types.end())
        fail("gl.pass", fmt::format("{} was given the type {:#x}", call, type), "a type of OpenGL 1.1 for this array");
    if (stride < 0) fail("gl.pass", fmt::format("{} was given a stride of {}", call, stride), "0 or more");
    array.size = std::clamp(size, 1, 4);
    array.type = type;
    array.stride = stride;
    array.pointer = pointer;
    array.progress = watch().outcome->progress;
}

bool check_array(const ClientArray& array, int first, int count) {
    const std::string name = array.name;
    if (!array.pointer) {
        fail("gl.arrays", name + " is enabled and has no address", "set its pointer, or disable the array");
        return false;
    }
    if (count <= 0) return true;
    const auto start = reinterpret_cast<uintptr_t>(vertex_at(array, first));
    const size_t bytes = static_cast<size_t>(count - 1) * step_of(array) + bytes_per_vertex(array);
    const std::string words = read_problem(array, start, bytes);
    if (words.empty()) return true;
    fail("gl.arrays", fmt::format("{} for {} vertices {}", name, count, words),
         "an array that lives until glDrawArrays returns and is long enough");
    return false;
}

void check_array_values(const ClientArray& array, int first, int count) {
    if (array.type != GL_FLOAT && array.type != GL_DOUBLE) return;
    for (int i = first; i < first + count; ++i) {
        const char* place = vertex_at(array, i);
        for (int c = 0; c < array.size; ++c, place += bytes_of_type(array.type))
            check_finite(array.name, {array.type == GL_FLOAT ? number_at<float>(place) : number_at<double>(place)});
    }
}

void record_array(const ClientArray& array, int first, int count) {
    uint32_t hash = 2166136261u;  // FNV-1a
    for (int i = first; i < first + count; ++i)
        for (size_t k = 0; k < bytes_per_vertex(array); ++k)
            hash = (hash ^ static_cast<unsigned char>(vertex_at(array, i)[k])) * 16777619u;
    stage::record_call(array.name, count, hash);
}

void check_finite(const char* call, std::initializer_list<float> numbers) {
    if (std::all_of(numbers.begin(), numbers.end(), [](float number) { return std::isfinite(number); })) return;
    fail("gl.values", fmt::format("{}({})", call, fmt::join(numbers, ", ")), "finite numbers");
}

}  // namespace tovu::validate
