// Replaces srand for plug-ins and reports calls of it.
#include <dlfcn.h>

#include "watch.h"

using namespace tovu::validate;

extern "C" __attribute__((visibility("default"))) void srand(unsigned int seed) noexcept {
    static const auto next = reinterpret_cast<void (*)(unsigned int)>(dlsym(RTLD_NEXT, "srand"));
    if (in_plugin_code() && on_host_thread()) {
        ++watch().host_depths.back();
        fail("life.two", "called srand, which changes the numbers of others", "leave the generator's seed to the host");
        --watch().host_depths.back();
    }
    next(seed);
}
