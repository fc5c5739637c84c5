#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "process.h"

namespace probe {

size_t accessible_bytes(uintptr_t address, char access, size_t wanted) {
    std::ifstream maps("/proc/self/maps");
    if (!maps) return wanted;
    const uintptr_t begin = address;
    for (std::string line; std::getline(maps, line);) {  // "from-to rwxp …", in ascending order
        unsigned long from = 0, to = 0;
        char rights[5] = "";
        if (std::sscanf(line.c_str(), "%lx-%lx %4s", &from, &to, rights) != 3) continue;
        if (from > address) break;
        if (address < to && std::strchr(rights, access) != nullptr) address = to;
    }
    return std::min<size_t>(wanted, address - begin);
}

void* loaded_opengl_function(const char* name) {
    for (const char* library : {static_cast<const char*>(nullptr), "libOpenGL.so.0", "libGL.so.1"}) {
        void* handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
        if (handle == nullptr) continue;
        void* function = dlsym(handle, name);
        dlclose(handle);  // the library stays loaded, since the process uses it
        if (function != nullptr) return function;
    }
    return nullptr;
}

}  // namespace probe
