#include "burst.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "stage/plugins/instance.h"

namespace stage {

namespace {

uint32_t slot_bits(const Instance& instance, int32_t index) {
    uint32_t bits = 0;
    std::memcpy(&bits, instance.block + static_cast<size_t>(index) * sizeof bits, sizeof bits);
    return bits;
}

int32_t alive_count(const BurstTarget& target) {
    int32_t count = 0;
    for (const Particle* particle = *target.particles->active_head; particle != nullptr; particle = particle->next)
        ++count;
    return count;
}

void set_number(Stage& stage, const BurstTarget& target, int32_t number) {
    set_slot_bits(stage, target.container_handle, target.number_index, std::bit_cast<uint32_t>(number));
}

}  // namespace

Result<BurstTarget> make_burst_target(Stage& stage, int32_t container_handle, const BirthNotes& births) {
    Instance& instance = *instance_of(stage, container_handle);
    const Plugin& owner = plugin(instance.plugin);
    const ParameterInfo& number = *find_parameter(owner, births.number);
    BurstTarget target{container_handle, find_parameter(owner, births.rate)->index, number.index,
                       static_cast<int32_t>(number.maximum)};
    // Saves the slots, which attaching may change. The detach returns all particles to the pool, which is still full.
    const std::vector<std::byte> slots(instance.block, instance.block + owner.parameters.size() * sizeof(uint32_t));
    ParticleAttachRequest request{0, 100.0f, 0};
    ParticleExchangeBlock* reply = nullptr;
    dispatch(stage, container_handle, TOVU_REQUEST_ATTACH, &request, &reply);
    target.particles = reply;
    dispatch(stage, container_handle, TOVU_REQUEST_DETACH, nullptr, &reply);
    std::copy(slots.begin(), slots.end(), instance.block);
    if (target.particles == nullptr)
        return Error{fmt::format("{} does not answer 'RAD1', which a burst needs to count particles", owner.name)};
    return target;
}

Result<Done> begin_burst_frame(Stage& stage, BurstTarget& target) {
    const Instance& instance = *instance_of(stage, target.container_handle);
    target.rate_bits = slot_bits(instance, target.rate_index);
    target.number_bits = slot_bits(instance, target.number_index);
    const int32_t alive = alive_count(target);
    if (target.due == 0) {
        if (alive > std::bit_cast<int32_t>(target.number_bits)) set_number(stage, target, alive);
        return Done{};
    }
    if (target.due > target.most - alive)
        return Error{fmt::format("{}: a burst of {} on top of {} living particles would be more than {}", target.place,
                                 target.due, alive, target.most)};
    set_number(stage, target, alive + target.due);
    // Twice the necessary rate, because of rounding. At high frame rates it exceeds the registered range.
    const auto rate = static_cast<float>(2.0 * target.due / stage.options.frame_period_seconds);
    set_slot_bits(stage, target.container_handle, target.rate_index, std::bit_cast<uint32_t>(rate));
    target.due = 0;
    return Done{};
}

void end_burst_frame(Stage& stage, BurstTarget& target) {
    set_slot_bits(stage, target.container_handle, target.rate_index, target.rate_bits);
    set_slot_bits(stage, target.container_handle, target.number_index, target.number_bits);
}

}  // namespace stage
