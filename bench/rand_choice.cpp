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

const Rand kLibraryRand = find_rand(dlopen(LIBC_SO, RTLD_LAZY | RTLD_NOLOAD));
const Rand kStageRand = find_rand(RTLD_NEXT);  // the Stage precedes the C library in the search order
Rand selected_rand = kLibraryRand;

}  // namespace

Case with_stage_rand(std::string name, Case of) {
    of.name = std::move(name);
    of.sample = [sample = std::move(of.sample)](Stopwatch& watch) {
        selected_rand = kStageRand;
        sample(watch);
        selected_rand = kLibraryRand;
    };
    return of;
}

}  // namespace bench

// The program's definition precedes those of all libraries. It forwards the call at the same cost for both generators.
extern "C" STAGE_EXPORT int rand() noexcept {
    return bench::selected_rand();
}
