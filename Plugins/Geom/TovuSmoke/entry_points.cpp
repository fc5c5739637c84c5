#include "host/entry_points.h"

#include "instance_operations.h"
#include "particle_exchange.h"
#include "registration.h"
#include "render/render_pass.h"

namespace {

tovu::SmokeInstance& instance_at(void* block) {
    return *static_cast<tovu::SmokeInstance*>(block);
}

}  // namespace

int32_t PLUGIN_INIT() noexcept {
    tovu::register_plugin();
    return 0;
}

void PLUGIN_INIT_FUNCTION(void* instance) noexcept {
    tovu::initialise_instance(instance);
}

void PLUGIN_CLEANUP_FUNCTION(void* instance) noexcept {
    tovu::clean_up_instance(instance_at(instance));
}

void PLUGIN_CHANGED_CALLBACK(void* instance, int32_t parameter_index) noexcept {
    tovu::parameter_changed(instance_at(instance), parameter_index);
}

void PLUGIN_EXEC_ACTION(void* instance, int32_t action) noexcept {
    tovu::execute_action(instance_at(instance), action);
}

uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t /*unused*/) noexcept {
    tovu::rebuild_frame(instance_at(instance));
    return 1;
}

uint8_t PLUGIN_RENDER_OPENGL(void* instance, int32_t render_flags, float opacity) noexcept {
    tovu::render_pass(instance_at(instance), render_flags, opacity);
    return 1;
}

void PLUGIN_DISPATCHER_CALLBACK(void* instance, int32_t request, void* data, void* reply) noexcept {
    tovu::answer_request(instance_at(instance), request, data, reply);
}
