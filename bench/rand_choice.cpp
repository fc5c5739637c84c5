#include "rand_choice.h"

#include <dlfcn.h>
#include <gnu/lib-names.h>

#include <cstdlib>
#include <stdexcept>

#include "stage/stage_export.h"

namespace bench {
namespace {

using Rand = int (*)() noexcept;

Rand find_rand(void* library) {
    const auto found = reinterpret_cast<Rand>(dlsym(library, "rand"));
    if (!found) throw std::runtime_error(dlerror());
    return found;
}

const Rand library_rand = find_rand(dlopen(LIBC_SO, RTLD_LAZY | RTLD_NOLOAD));
const Rand stage_rand = find_rand(RTLD_NEXT);  // the Stage comes before the C library
Rand rand_in_force = library_rand;

}  // namespace

Case with_stage_rand(std::string name, Case of) {
    of.name = std::move(name);
    of.sample = [sample = std::move(of.sample)](Stopwatch& watch) {
        rand_in_force = stage_rand;
        sample(watch);
        rand_in_force = library_rand;
    };
    return of;
}

}  // namespace bench

// The program's own comes before all others. It passes the call on, at the same cost for both.
extern "C" STAGE_EXPORT int rand() noexcept {
    return bench::rand_in_force();
}
