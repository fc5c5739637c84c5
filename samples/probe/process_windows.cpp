#include <windows.h>

#include <algorithm>

#include "process.h"

namespace probe {

size_t accessible_bytes(uintptr_t address, char access, size_t wanted) {
    constexpr DWORD kWritable = PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    constexpr DWORD kReadable = kWritable | PAGE_READONLY | PAGE_EXECUTE_READ;
    const uintptr_t begin = address;
    while (address - begin < wanted) {
        MEMORY_BASIC_INFORMATION region;
        if (VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) == 0) break;
        const bool guarded = (region.Protect & PAGE_GUARD) != 0;
        const DWORD rights = region.State == MEM_COMMIT && !guarded ? region.Protect : 0;
        if ((rights & (access == 'w' ? kWritable : kReadable)) == 0) break;
        address = reinterpret_cast<uintptr_t>(region.BaseAddress) + region.RegionSize;
    }
    return std::min<size_t>(wanted, address - begin);
}

void* loaded_opengl_function(const char* name) {
    const HMODULE library = GetModuleHandleA("opengl32.dll");
    return library == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(library, name));
}

}  // namespace probe
