// A plug-in that breaks one rule: the one that FAULT names.
#include "entry_points.h"
#include "host_services.h"

enum class Fault {
    NAME_MISSING,
    NAME_TWICE,
    NAME_OF_ANOTHER,
    TYPE_MISSING,
    TYPE_WRONG,
    SIZE_MISSING,
    SIZE_TOO_SMALL,
    INIT_NOT_ZERO,
    ENTRY_POINT_MISSING,
    PARAMETER_TWICE,
    DEFAULT_OUTSIDE,
    SCENE_TOO_EARLY
};

static bool breaks(Fault rule) {
    return rule == Fault::FAULT;
}

int32_t PLUGIN_INIT() noexcept {
    if (!breaks(Fault::NAME_MISSING)) pelRegisterPlugin(breaks(Fault::NAME_OF_ANOTHER) ? "Probe" : "Faulty");
    if (breaks(Fault::NAME_TWICE)) pelRegisterPlugin("Faulty again");
    if (!breaks(Fault::TYPE_MISSING)) pelRegisterPluginType(breaks(Fault::TYPE_WRONG) ? 7 : 1);
    pelRegisterParameterInt("first", "First", 1, 0, 10);
    if (breaks(Fault::PARAMETER_TWICE)) pelRegisterParameterBool("first", "First", 0);
    if (breaks(Fault::DEFAULT_OUTSIDE)) pelRegisterParameterFloat("second", "Second", 11.5f, 0.0f, 10.0f);
    if (breaks(Fault::SCENE_TOO_EARLY)) _api__object_valid(1);
    if (!breaks(Fault::SIZE_MISSING)) pelRegisterTotalSize(breaks(Fault::SIZE_TOO_SMALL) ? 3 : 64);
    return breaks(Fault::INIT_NOT_ZERO) ? 5 : 0;
}

void PLUGIN_INIT_FUNCTION(void*) noexcept {}
void PLUGIN_CLEANUP_FUNCTION(void*) noexcept {}
void PLUGIN_CHANGED_CALLBACK(void*, int32_t) noexcept {}
void PLUGIN_EXEC_ACTION(void*, int32_t) noexcept {}
uint8_t PLUGIN_NEW_GEOM(void*, int32_t) noexcept {
    return 1;
}
#ifndef FAULT_ENTRY_POINT_MISSING
uint8_t PLUGIN_RENDER_OPENGL(void*, int32_t, float) noexcept {
    return 1;
}
#endif
void PLUGIN_DISPATCHER_CALLBACK(void*, int32_t, void*, void*) noexcept {}
