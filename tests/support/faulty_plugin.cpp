// A plug-in that breaks the rule FAULT. With AT_WORK it registers correctly, and the environment variable FAULTY names
// an entry point (or "loading") and a fault, as in "PLUGIN_NEW_GEOM:crash".
#include <tovu/entry_points.h>
#include <tovu/host_services.h>
#include <tovu/opengl.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

static bool breaks(const char* rule) {
    return std::strcmp(rule, FAULT) == 0;
}

namespace {

// Volatile, so that the compiler cannot know their values.
volatile int zero;
volatile int* volatile nowhere = reinterpret_cast<volatile int*>(uintptr_t{64});

int frames;  // calls of PLUGIN_NEW_GEOM so far, of all instances; faults in a frame happen in the fifth

void overflow_stack() {
    volatile int room[1024];
    room[0] = zero;
    if (zero == 0) overflow_stack();
    zero = room[0];
}

void cause_fault(const char* kind) {
    const auto is = [kind](const char* name) { return std::strcmp(kind, name) == 0; };
    if (is("crash")) *nowhere = 1;
    if (is("overflow")) overflow_stack();
    if (is("trap")) __builtin_trap();
    if (is("abort")) std::abort();
    if (is("throw")) throw std::runtime_error("no more smoke");
    if (is("throw a number")) throw 5;
    if (is("exit")) std::exit(0);
    if (is("quick_exit")) std::quick_exit(0);
    while (is("loop")) zero = 0;
    if (is("opengl")) ormixGL_glEnable(0x1234);
    for (int32_t i = 1; is("complaints") && i <= 1100; ++i) _api__set_geom_changed(i);
}

void work(const char* entry_point) {
    if (!breaks("AT_WORK")) return;
    const char* fault = std::getenv("FAULTY");
    const size_t length = std::strlen(entry_point);
    if (fault && std::strncmp(fault, entry_point, length) == 0 && fault[length] == ':') cause_fault(fault + length + 1);
}

__attribute__((constructor)) void load() {
    work("loading");
}

}  // namespace

// NOLINTBEGIN(bugprone-exception-escape): an exception that leaves an entry point is one of the faults

int32_t PLUGIN_INIT() noexcept {
    work("PLUGIN_INIT");
    if (!breaks("NAME_MISSING")) pelRegisterPlugin(breaks("NAME_OF_ANOTHER") ? "Probe" : "Faulty");
    if (breaks("NAME_TWICE")) pelRegisterPlugin("Faulty again");
    if (!breaks("TYPE_MISSING")) pelRegisterPluginType(breaks("TYPE_WRONG") ? 7 : 1);
    pelRegisterParameterInt("first", "First", 1, 0, 10);
    if (breaks("PARAMETER_TWICE")) pelRegisterParameterBool("first", "First", 0);
    if (breaks("DEFAULT_OUTSIDE")) pelRegisterParameterFloat("second", "Second", 11.5f, 0.0f, 10.0f);
    if (breaks("SCENE_TOO_EARLY")) _api__object_valid(1);
    if (!breaks("SIZE_MISSING")) pelRegisterTotalSize(breaks("SIZE_TOO_SMALL") ? 3 : 64);
    return breaks("INIT_NOT_ZERO") ? 5 : 0;
}

void PLUGIN_INIT_FUNCTION(void*) noexcept {
    work("PLUGIN_INIT_FUNCTION");
}
void PLUGIN_CLEANUP_FUNCTION(void*) noexcept {
    work("PLUGIN_CLEANUP_FUNCTION");
}
void PLUGIN_CHANGED_CALLBACK(void*, int32_t) noexcept {}
void PLUGIN_EXEC_ACTION(void*, int32_t) noexcept {}
uint8_t PLUGIN_NEW_GEOM(void*, int32_t) noexcept {
    if (++frames > 4) work("PLUGIN_NEW_GEOM");
    if (!breaks("AT_WORK")) return 1;
    int32_t geometry = -1;
    _api__container_get_geometry(_api__get_objectid("asked", "", TOVU_OBJECT_CONTAINER), &geometry);
    _api__geom_dispatcher(geometry, 1, nullptr, nullptr);
    return 1;
}
#ifndef FAULT_ENTRY_POINT_MISSING
uint8_t PLUGIN_RENDER_OPENGL(void*, int32_t, float) noexcept {
    if (frames > 4) work("PLUGIN_RENDER_OPENGL");
    return 1;
}
#endif
void PLUGIN_DISPATCHER_CALLBACK(void*, int32_t, void*, void*) noexcept {
    work("PLUGIN_DISPATCHER_CALLBACK");
}

// NOLINTEND(bugprone-exception-escape)
