#include <tovu/host_services.h>

#include "gather.h"

namespace gather {

int32_t gather_event = -1;

void register_plugin() {
    static const char* const kReferenceChoices[] = {"Local", "World", nullptr};
    static const char* const kModeChoices[] = {"Timed", "Gather", "Release", nullptr};
    pelRegisterPlugin("TovuGather");
    pelRegisterPluginType(1);
#define CONTAINER(name, label) pelRegisterParameterContainer(#name, label, "");
#define RADIO(name, label, initial, choices) pelRegisterParameterRadio(#name, label, initial, choices);
#define INT(name, label, initial, minimum, maximum) pelRegisterParameterInt(#name, label, initial, minimum, maximum);
#define FLOAT(name, label, initial, minimum, maximum) \
    pelRegisterParameterFloat(#name, label, initial, minimum, maximum);
#define BOOL(name, label, initial) pelRegisterParameterBool(#name, label, initial);
    GATHER_PARAMETERS(CONTAINER, RADIO, INT, FLOAT, BOOL)
    pelRegisterInfoText("info", "Gathers smoke into the outline of a container");
    pelRegisterPushButton("restart", "Restart", kActionRestart);
    pelRegisterTotalSize(static_cast<int32_t>(sizeof(Gather)));
    pelRegisterUseLOD(0);
    pelRegisterUseEvents(1);
    gather_event = pelRegisterEvent("Gather", 0);
}

}  // namespace gather
