// The eight exports.
#include <tovu/entry_points.h>
#include <tovu/host_services.h>

#include "gather.h"

using gather::Gather;

constexpr int32_t kRestart = 1;  // number of the push button

static Gather& gather_at(void* instance) {
    return *static_cast<Gather*>(instance);
}

int32_t PLUGIN_INIT() noexcept {
    pelRegisterPlugin("TovuGather");
    pelRegisterPluginType(1);
    static constexpr const char* kReferenceChoices[] = {"Local", "World", nullptr};
    pelRegisterParameterContainer("smoke_container", "Smoke Container", "");
    pelRegisterParameterRadio("smoke_reference", "Smoke's Reference", gather::kReferenceLocal, kReferenceChoices);
    pelRegisterParameterContainer("target_container", "Target Container", "");
#define FLOAT(name, label, initial, minimum, maximum) \
    pelRegisterParameterFloat(#name, label, initial, minimum, maximum);
#define COLOUR(name, label, initial) pelRegisterParameterInt(#name, label, initial, 0, 255);
    GATHER_FLOATS(FLOAT)
    GATHER_COLOURS(COLOUR)
    pelRegisterInfoText("info", "Gathers smoke into the outline of a container");
    pelRegisterPushButton("restart", "Restart", kRestart);
    pelRegisterTotalSize(static_cast<int32_t>(sizeof(Gather)));
    pelRegisterUseLOD(0);
    pelRegisterUseEvents(0);
    return 0;
}

void PLUGIN_INIT_FUNCTION(void* instance) noexcept {
    gather_at(instance) = {gather_at(instance).slots};  // the host has filled them
}

void PLUGIN_CLEANUP_FUNCTION(void* instance) noexcept {
    gather::detach(gather_at(instance));
}

void PLUGIN_CHANGED_CALLBACK(void* /*instance*/, int32_t /*parameter_index*/) noexcept {}  // slots are read every frame

void PLUGIN_EXEC_ACTION(void* instance, int32_t action) noexcept {
    if (action == kRestart) gather_at(instance).seconds = 0;
}

uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t /*not read*/) noexcept {
    gather::run_frame(gather_at(instance));
    return 1;
}

uint8_t PLUGIN_RENDER_OPENGL(void* /*instance*/, int32_t /*render_flags*/, float /*opacity*/) noexcept {
    return 1;  // the smoke draws its particles itself
}

void PLUGIN_DISPATCHER_CALLBACK(void* /*instance*/, int32_t /*request*/, void* /*data*/, void* /*reply*/) noexcept {}
