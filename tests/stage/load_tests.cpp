// Runs a library of tests, which loads the Stage into this process: load_tests TESTS STAGE [ARGUMENTS OF GOOGLETEST]
#include <dlfcn.h>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    void* tests = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    const auto run_tests = tests ? reinterpret_cast<int (*)(int, char**)>(dlsym(tests, "run_tests")) : nullptr;
    // Makes the services global symbols for plug-ins. `rand` is still that of the C library, which was loaded first.
    if (!run_tests || !dlopen(argv[2], RTLD_NOW | RTLD_GLOBAL | RTLD_NOLOAD)) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    return run_tests(argc - 2, argv + 2);
}
