/* A host whose functions are in a library: loads the library and calls its `main`. launcher LIBRARY [arguments] */
#include <stdio.h>
#include <windows.h>

int main(int argc, char** argv) {
    HMODULE library = argc < 2 ? NULL : LoadLibraryA(argv[1]);
    int (*run)(int, char**) = NULL;
    if (library != NULL) run = (int (*)(int, char**))(void*)GetProcAddress(library, "main");
    if (run == NULL) return fprintf(stderr, "launcher: no library with a main\n"), 2;
    return run(argc - 1, argv + 1);
}
