// The eight exports.
#include <tovu/entry_points.h>
#include <tovu/host_services.h>

#include <new>

#include "gather.h"

using gather::Gather;

static Gather& gather_at(void* instance) {
    return *static_cast<Gather*>(instance);
}

static void register_parameters() {
    static constexpr const char* kReferenceChoices[] = {"Local", "World", nullptr};
    using gather::kReferenceLocal;
#define CONTAINER(name, label) pelRegisterParameterContainer(#name, label, "");
#define RADIO(name, label, initial, choices) pelRegisterParameterRadio(#name, label, initial, choices);
#define FLOAT(name, label, initial, minimum, maximum) \
    pelRegisterParameterFloat(#name, label, initial, minimum, maximum);
#define COLOUR(name, label, initial) pelRegisterParameterInt(#name, label, initial, 0, 255);
    GATHER_PARAMETERS(CONTAINER, RADIO, FLOAT, COLOUR)
}

int32_t PLUGIN_INIT() noexcept {
    pelRegisterPlugin("TovuGather");
    pelRegisterPluginType(1);
    register_parameters();
    pelRegisterInfoText("info", "Gathers smoke into the outline of a container");
    pelRegisterPushButton("restart", "Restart", gather::kActionRestart);
    pelRegisterTotalSize(static_cast<int32_t>(sizeof(Gather)));
    pelRegisterUseLOD(0);
    pelRegisterUseEvents(0);
    return 0;
}

void PLUGIN_INIT_FUNCTION(void* instance) noexcept {
    const gather::Slots slots = gather_at(instance).slots;  // the host has filled them
    new (instance) Gather{slots, {}, {}};
}

void PLUGIN_CLEANUP_FUNCTION(void* instance) noexcept {
    gather::detach(gather_at(instance));
    gather_at(instance).~Gather();
}

void PLUGIN_CHANGED_CALLBACK(void* /*instance*/, int32_t /*parameter_index*/) noexcept {}  // slots are read every frame

void PLUGIN_EXEC_ACTION(void* instance, int32_t action) noexcept {
    if (action == gather::kActionRestart) gather_at(instance).clock.seconds = 0;
}

uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t /*not read*/) noexcept {
    gather::run_frame(gather_at(instance));
    return 1;
}

uint8_t PLUGIN_RENDER_OPENGL(void* /*instance*/, int32_t /*render_flags*/, float /*opacity*/) noexcept {
    return 1;  // the smoke draws its particles itself
}

void PLUGIN_DISPATCHER_CALLBACK(void* /*instance*/, int32_t /*request*/, void* /*data*/, void* /*reply*/) noexcept {}
