/* A plug-in that breaks the one rule that its FAULT_ definition names. */
#include "entry_points.h"
#include "host_services.h"

int32_t PLUGIN_INIT(void) {
#ifndef FAULT_NAME_MISSING
#ifdef FAULT_NAME_OF_ANOTHER
    pelRegisterPlugin("Probe");
#else
    pelRegisterPlugin("Faulty");
#endif
#endif
#ifdef FAULT_NAME_TWICE
    pelRegisterPlugin("Faulty again");
#endif
#ifndef FAULT_TYPE_MISSING
#ifdef FAULT_TYPE_WRONG
    pelRegisterPluginType(7);
#else
    pelRegisterPluginType(1);
#endif
#endif
    pelRegisterParameterInt("first", "First", 1, 0, 10);
#ifdef FAULT_PARAMETER_TWICE
    pelRegisterParameterBool("first", "First", 0);
#endif
#ifdef FAULT_DEFAULT_OUTSIDE
    pelRegisterParameterFloat("second", "Second", 11.5f, 0.0f, 10.0f);
#endif
#ifdef FAULT_SCENE_TOO_EARLY
    _api__object_valid(1);
#endif
#ifdef FAULT_SIZE_TOO_SMALL
    pelRegisterTotalSize(3);
#elif !defined(FAULT_SIZE_MISSING)
    pelRegisterTotalSize(64);
#endif
#ifdef FAULT_INIT_NOT_ZERO
    return 5;
#else
    return 0;
#endif
}

void PLUGIN_INIT_FUNCTION(void* instance) {
    (void)instance;
}
void PLUGIN_CLEANUP_FUNCTION(void* instance) {
    (void)instance;
}
void PLUGIN_CHANGED_CALLBACK(void* instance, int32_t parameter_index) {
    (void)instance;
    (void)parameter_index;
}
void PLUGIN_EXEC_ACTION(void* instance, int32_t action) {
    (void)instance;
    (void)action;
}
uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t unused) {
    (void)instance;
    (void)unused;
    return 1;
}
#ifndef FAULT_ENTRY_POINT_MISSING
uint8_t PLUGIN_RENDER_OPENGL(void* instance, int32_t render_flags, float opacity) {
    (void)instance;
    (void)render_flags;
    (void)opacity;
    return 1;
}
#endif
void PLUGIN_DISPATCHER_CALLBACK(void* instance, int32_t request, void* data, void* reply) {
    (void)instance;
    (void)request;
    (void)data;
    (void)reply;
}
