#include "registration.h"

#include <cstdio>

#include "host/host_services.h"
#include "instance_operations.h"
#include "render/draw_list.h"

namespace tovu {
namespace {

constexpr int32_t kGeometryPlugin = 1;
constexpr int32_t kTextColumns = 30;

void register_parameters() {
#define PARAM_INT(name, label, initial, minimum, maximum) \
    pelRegisterParameterInt(#name, label, initial, minimum, maximum);
#define PARAM_FLOAT(name, label, initial, minimum, maximum) \
    pelRegisterParameterFloat(#name, label, initial, minimum, maximum);
#define PARAM_BOOL(name, label, initial) pelRegisterParameterBool(#name, label, initial);
#define PARAM_RADIO(name, label, initial, ...)                     \
    {                                                              \
        const char* const choices[] = {__VA_ARGS__, nullptr};      \
        pelRegisterParameterRadio(#name, label, initial, choices); \
    }
#define PARAM_STRING(name, label, initial, longest) \
    pelRegisterParameterString(#name, label, initial, kTextColumns, longest, 0);
#define PARAM_CONTAINER(name, label) pelRegisterParameterContainer(#name, label, "");
#define PARAM_IMAGE(name, label) pelRegisterParameterImage(#name, label, "");
#include "instance/parameters.def"
}

}  // namespace

void register_plugin() {
    pelRegisterPlugin("TovuSmoke");
    pelRegisterPluginType(kGeometryPlugin);
    register_parameters();
    char version[32];
    std::snprintf(version, sizeof version, "Version %d.%d.%2d", 1, 0, 0);
    pelRegisterInfoText("info", version);
    pelRegisterPushButton("reset", "Reset", kActionReset);
    pelRegisterPushButton("build_alpha", "Build Alpha", kActionBuildAlpha);
    pelRegisterTotalSize(kInstanceBytes);
    pelRegisterUseLOD(0);
    pelRegisterUseEvents(1);
    sort_event = pelRegisterEvent("Sort", 0);
    qsort_event = pelRegisterEvent("qsort", 0);
}

}  // namespace tovu
