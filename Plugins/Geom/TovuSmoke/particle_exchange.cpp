#include "particle_exchange.h"

#include "particles/pool.h"

namespace tovu {
namespace {

void attach(SmokeInstance& instance, const ParticleAttachRequest& request, ParticleExchangeBlock*& reply) {
    ParticleExchangeBlock& block = instance.exchange_block;
    block.active_head = &instance.active_head;  // addresses: the consumer always reads the current heads
    block.inactive_head = &instance.inactive_head;
    block.deleted_head = instance.deleted_head;
    block.particle_count = param::number_of_particles(instance.parameters);
    instance.consumer_birth_limit = request.birth_limit;
    instance.parameters.life_time_scale = request.death_acceleration;  // the only numeric slot that the plug-in writes
    instance.consumer_owns_colour = request.owns_colour;
    reply = &block;
    instance.consumer_attached = 1;
}

}  // namespace

void answer_request(SmokeInstance& instance, int32_t request, const void* data, void* reply) {
    const auto reply_slot = static_cast<ParticleExchangeBlock**>(reply);
    if (request == TOVU_REQUEST_ATTACH) {
        if (data == nullptr || reply_slot == nullptr) return;
        attach(instance, *static_cast<const ParticleAttachRequest*>(data), *reply_slot);
    } else if (request == TOVU_REQUEST_DETACH) {
        detach_particles(instance);
        if (reply_slot != nullptr) *reply_slot = nullptr;
        instance.consumer_attached = 0;
    }
}

}  // namespace tovu
