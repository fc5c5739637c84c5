#include "digest.h"

#include <algorithm>
#include <cstring>

#include "fnv1a.h"
#include "stage/plugins/instance_memory.h"

namespace stage {
namespace {

template <class Value>
Value value_at(const std::byte* address) {
    Value value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

bool is_zero(const std::byte* address, size_t bytes) {
    return bytes == 1 ? value_at<uint8_t>(address) == 0 : value_at<uint32_t>(address) == 0;
}

/// True if the conditions of the field hold in this block.
bool counts(const Field& field, const std::byte* block) {
    if (field.never) return false;
    for (const FieldCondition& condition : field.conditions)
        if (is_zero(block + condition.offset, condition.bytes) != condition.is_zero) return false;
    return true;
}

template <class Value>
void add_values(Fnv1a& digest, const std::byte* first, size_t count) {
    for (size_t i = 0; i < count; ++i) digest.add(value_at<Value>(first + i * sizeof(Value)));
}

void add_field(Fnv1a& digest, const Field& field, const std::byte* base) {
    const std::byte* first = base + field.offset;
    switch (field.type) {
        case FieldType::kUint8:
            return add_values<uint8_t>(digest, first, field.count);
        case FieldType::kInt32:
            return add_values<uint32_t>(digest, first, field.count);
        case FieldType::kFloat32:
            return add_values<float>(digest, first, field.count);
        case FieldType::kFloat64:
            return add_values<double>(digest, first, field.count);
        case FieldType::kText: {
            const char* text = reinterpret_cast<const char*>(first);
            return digest.add(std::string_view(text, strnlen(text, field.count)));
        }
        case FieldType::kList:
        case FieldType::kLink:
        case FieldType::kPointer:
            return;
    }
}

void add_slots(Fnv1a& digest, const Instance& instance) {
    for (const ParameterInfo& parameter : plugin(instance.plugin).parameters)
        if (const char* text = instance.text_buffers[static_cast<size_t>(parameter.index)])
            digest.add(std::string_view(text));
        else
            digest.add(read_slot(instance, parameter.index));
}

void add_list(Fnv1a& digest, const std::byte* record, const std::vector<Field>& fields, size_t link_offset) {
    uint32_t count = 0;
    for (; record; record = value_at<const std::byte*>(record + link_offset), ++count)
        for (const Field& field : fields) add_field(digest, field, record);
    digest.add(count);
}

void add_lists(Fnv1a& digest, const std::byte* block, const FieldTable& table) {
    std::vector<Field> of_live;
    std::vector<Field> of_others;
    size_t link_offset = 0;
    for (const Field& field : table.record) {
        if (field.type == FieldType::kLink) link_offset = field.offset;
        if (!counts(field, block)) continue;
        of_live.push_back(field);
        if (!field.live) of_others.push_back(field);
    }
    bool live = true;
    for (const Field& field : table.block) {
        if (field.type != FieldType::kList) continue;
        add_list(digest, value_at<const std::byte*>(block + field.offset), live ? of_live : of_others, link_offset);
        live = false;
    }
}

void add_box(Fnv1a& digest, const std::optional<BoundingBox>& box) {
    digest.add_byte(box ? 1 : 0);
    if (!box) return;
    for (const Vector3& corner : {box->minimum, box->maximum})
        for (const float value : {corner.x, corner.y, corner.z}) digest.add(value);
}

Fnv1a digest_state(const Instance& instance, const FieldTable& table) {
    Fnv1a digest;
    add_slots(digest, instance);
    for (const Field& field : table.block)
        if (counts(field, instance.block)) add_field(digest, field, instance.block);
    add_lists(digest, instance.block, table);
    return digest;
}

}  // namespace

Result<FieldTables> read_field_tables() {
    FieldTables tables;
    for (PluginId id = 0; static_cast<size_t>(id) < loaded_plugins().size(); ++id) {
        Result<FieldTable> table = read_field_table(plugin(id));
        if (!table) return table.error();
        tables[id] = std::move(*table);
    }
    return tables;
}

uint64_t state_digest(const Instance& instance, const FieldTable& table) {
    return digest_state(instance, table).value;
}

int64_t live_records(const Instance& instance, const FieldTable& table) {
    const auto list = std::ranges::find(table.block, FieldType::kList, &Field::type);
    const auto link = std::ranges::find(table.record, FieldType::kLink, &Field::type);
    if (list == table.block.end() || link == table.record.end()) return 0;
    int64_t count = 0;
    for (const std::byte* record = value_at<const std::byte*>(instance.block + list->offset); record; ++count)
        record = value_at<const std::byte*>(record + link->offset);
    return count;
}

uint64_t frame_digest(const Stage& stage, const FieldTables& tables) {
    Fnv1a digest;
    for (const int32_t handle : containers_in_tree_order(stage)) {
        const Instance* instance = instance_of(stage, handle);
        if (!instance) continue;
        const Container& container = *find_container(stage, handle);
        Fnv1a state = digest_state(*instance, tables.at(instance->plugin));
        add_box(state, container.bounding_box);
        digest.add(std::string_view(container.name));
        digest.add(state.value);
    }
    return digest.value;
}

}  // namespace stage
