#include "particle_walk.h"

#include <algorithm>
#include <cstring>

namespace tovu {

namespace {

template <class Value>
Value value_at(const std::byte* place) {
    Value value;
    std::memcpy(&value, place, sizeof value);
    return value;
}

const stage::Field* find_field(const std::vector<stage::Field>& fields, std::string_view name) {
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const stage::Field& field) {
        return field.name == name && field.type == stage::FieldType::kFloat32;
    });
    return found == fields.end() ? nullptr : &*found;
}

const stage::Field* find_type(const std::vector<stage::Field>& fields, stage::FieldType type) {
    const auto found =
        std::find_if(fields.begin(), fields.end(), [&](const stage::Field& field) { return field.type == type; });
    return found == fields.end() ? nullptr : &*found;
}

}  // namespace

std::optional<ParticlePlaces> find_particle_places(const stage::FieldTable& table) {
    const stage::Field* list = find_type(table.block, stage::FieldType::kList);
    const stage::Field* link = find_type(table.record, stage::FieldType::kLink);
    const stage::Field* age = find_field(table.record, "age");
    const stage::Field* life = find_field(table.record, "life");
    if (list == nullptr || link == nullptr || age == nullptr || life == nullptr) return {};
    return ParticlePlaces{list->offset, link->offset, age->offset, life->offset};
}

int32_t count_births(const stage::Instance& instance, const ParticlePlaces& places, double frame_seconds) {
    const auto youngest = static_cast<float>(1.5 * frame_seconds);
    int32_t births = 0;
    const auto* record = value_at<const std::byte*>(instance.block + places.first);
    for (; record != nullptr && value_at<float>(record + places.age) < youngest; ++births)
        record = value_at<const std::byte*>(record + places.link);
    return births;
}

void count_particles(const stage::Instance& instance, const ParticlePlaces& places, ParticleCounts& counts) {
    counts.alive = 0;
    counts.by_life.fill(0);
    const auto* record = value_at<const std::byte*>(instance.block + places.first);
    for (; record != nullptr; record = value_at<const std::byte*>(record + places.link)) {
        ++counts.alive;
        const float part = value_at<float>(record + places.age) / value_at<float>(record + places.life);
        const float bin = part * static_cast<float>(kLifeBins);
        const bool inside = bin >= 0.0f && bin < static_cast<float>(kLifeBins);  // false for NaN
        ++counts.by_life[inside ? static_cast<size_t>(bin) : kLifeBins - 1];
    }
}

}  // namespace tovu
