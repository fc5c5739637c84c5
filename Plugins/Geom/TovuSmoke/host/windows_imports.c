/*
 * Part of every plug-in library on Windows: the host's functions, found when the library is loaded. C11 and C++; an
 * object file of its own, compiled without link-time optimisation.
 *
 * A Windows import names the file that it comes from, but a host may have any name. So a plug-in library imports
 * nothing from its host. It defines each function as a jump to an address that DllMain looks up: in the program first,
 * then in each loaded module, in the order of loading. If one is missing, loading fails, and its name goes to the
 * debugger's output and to standard error.
 *
 * `rand` is looked up in the same way, except in C runtimes. Where neither the program nor a module of the host exports
 * it, it is the function of the C runtime that this library is linked with.
 */
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
/* after windows.h */
#include <psapi.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#ifdef __cplusplus
#define C_LINKAGE extern "C"
#else
#define C_LINKAGE extern
#endif

/* The addresses, named by the assembly of the jumps. */
#define HOST_FUNCTION(name)             \
    C_LINKAGE FARPROC tovu_host_##name; \
    FARPROC tovu_host_##name;
#include "host_functions.def"
HOST_FUNCTION(rand)
#undef HOST_FUNCTION

/* The jumps. 32-bit Windows puts an underscore before the names of C. */
#if defined(__x86_64__)
#define JUMP(name) ".globl " #name "\n" #name ": jmp *tovu_host_" #name "(%rip)\n"
#elif defined(__i386__)
#define JUMP(name) ".globl _" #name "\n_" #name ": jmp *_tovu_host_" #name "\n"
#else
#error "write the jump of this processor"
#endif
#define HOST_FUNCTION(name) __asm__(".text\n" JUMP(name));
#include "host_functions.def"
HOST_FUNCTION(rand)
#undef HOST_FUNCTION

typedef struct HostFunction {
    const char* name;
    FARPROC* address;
} HostFunction;

static const HostFunction host_functions[] = {
#define HOST_FUNCTION(name) {#name, &tovu_host_##name},
#include "host_functions.def"
#undef HOST_FUNCTION
};

/* The modules of the process, the program first. count: set to their number. Returns null without memory. */
static HMODULE* list_modules(DWORD* count) {
    DWORD bytes = 0;
    HMODULE* modules;
    K32EnumProcessModules(GetCurrentProcess(), NULL, 0, &bytes);
    modules = (HMODULE*)HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, bytes + sizeof(HMODULE));
    if (modules == NULL) return NULL;
    modules[0] = GetModuleHandleA(NULL);
    *count = 1;
    if (K32EnumProcessModules(GetCurrentProcess(), modules + 1, bytes, &bytes))
        *count += bytes / (DWORD)sizeof(HMODULE);
    return modules;
}

static FARPROC find(const HMODULE* modules, DWORD count, const char* name) {
    FARPROC found = NULL;
    DWORD i;
    for (i = 0; i < count && found == NULL; ++i) found = GetProcAddress(modules[i], name);
    return found;
}

/* Every C runtime exports `_initterm`, which starts it, and a `rand` of its own. */
static FARPROC find_rand(const HMODULE* modules, DWORD count) {
    HMODULE own_runtime = NULL;
    DWORD i;
    for (i = 0; i < count; ++i) {
        const FARPROC found = GetProcAddress(modules[i], "rand");
        if (found != NULL && GetProcAddress(modules[i], "_initterm") == NULL) return found;
    }
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       (LPCSTR)(uintptr_t)&_errno, &own_runtime);
    return GetProcAddress(own_runtime, "rand");
}

static void report_missing(HMODULE library, const char* name) {
    char path[MAX_PATH] = "";
    char line[MAX_PATH + 128];
    DWORD written = 0;
    GetModuleFileNameA(library, path, MAX_PATH - 1);
    snprintf(line, sizeof line, "%s: no module of this process exports '%s'\n", path, name);
    OutputDebugStringA(line);
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), line, (DWORD)strlen(line), &written, NULL);
}

/*
 * Runs under the loader's lock, so it loads no library, waits for nothing and starts no thread: it reads the list of
 * modules and their tables of exports. No other thread can load or unload a module meanwhile.
 */
C_LINKAGE BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID reserved);
BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID reserved) {
    DWORD count = 0;
    HMODULE* modules;
    BOOL complete = TRUE;
    size_t i;
    (void)reserved;
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    modules = list_modules(&count);
    if (modules == NULL) return FALSE;
    for (i = 0; i < sizeof host_functions / sizeof *host_functions; ++i) {
        *host_functions[i].address = find(modules, count, host_functions[i].name);
        if (*host_functions[i].address != NULL) continue;
        report_missing(library, host_functions[i].name);
        complete = FALSE;
    }
    tovu_host_rand = find_rand(modules, count);
    HeapFree(GetProcessHeap(), 0, modules);
    return complete;
}
