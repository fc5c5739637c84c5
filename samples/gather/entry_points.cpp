// The eight exports, a forwarding line each.
#include <tovu/entry_points.h>

#include <new>

#include "gather.h"

using gather::Gather;

static Gather& gather_at(void* instance) {
    return *static_cast<Gather*>(instance);
}

int32_t PLUGIN_INIT() noexcept {
    gather::register_plugin();
    return 0;
}

void PLUGIN_INIT_FUNCTION(void* instance) noexcept {
    const gather::Slots slots = gather_at(instance).slots;  // filled by the host already
    new (instance) Gather{slots, {}, {}};
}

void PLUGIN_CLEANUP_FUNCTION(void* instance) noexcept {
    gather::detach(gather_at(instance));
    gather::free_outline(gather_at(instance).outline);
}

void PLUGIN_CHANGED_CALLBACK(void* /*instance*/, int32_t /*parameter_index*/) noexcept {}  // all are read afresh

void PLUGIN_EXEC_ACTION(void* instance, int32_t action) noexcept {
    if (action == gather::kActionRestart) gather::restart(gather_at(instance));
}

uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t /*not read*/) noexcept {
    gather::run_frame(gather_at(instance));
    return 1;
}

uint8_t PLUGIN_RENDER_OPENGL(void* /*instance*/, int32_t /*render_flags*/, float /*opacity*/) noexcept {
    return 1;
}

void PLUGIN_DISPATCHER_CALLBACK(void* /*instance*/, int32_t /*request*/, void* /*data*/, void* /*reply*/) noexcept {}
