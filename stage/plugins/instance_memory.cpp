#include "instance_memory.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace stage {
namespace {

constexpr size_t kBlockGuardBytes = 128;
constexpr size_t kTextGuardBytes = 16;
constexpr unsigned char kGuardPattern = 0xA5;

bool is_text(const ParameterInfo& parameter) {
    return parameter.max_length > 0;
}

size_t buffer_bytes(const ParameterInfo& parameter) {
    return static_cast<size_t>(parameter.max_length) + 1;
}

void lay_guard(void* guard, size_t bytes) {
    std::memset(guard, kGuardPattern, bytes);
}

bool guard_is_intact(const void* guard, size_t bytes) {
    const auto* begin = static_cast<const unsigned char*>(guard);
    return std::all_of(begin, begin + bytes, [](unsigned char byte) { return byte == kGuardPattern; });
}

uint32_t text_address(const char* buffer) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(buffer));
}

bool allocate_texts(Instance& instance, const std::vector<ParameterInfo>& parameters) {
    size_t bytes = 0;
    for (const ParameterInfo& parameter : parameters)
        if (is_text(parameter)) bytes += buffer_bytes(parameter) + kTextGuardBytes;
    instance.text_buffers.assign(parameters.size(), nullptr);
    if (bytes == 0) return true;
    instance.texts = LowMemory(bytes);
    char* next = instance.texts.data();
    if (!next) return false;
    for (const ParameterInfo& parameter : parameters) {
        if (!is_text(parameter)) continue;
        instance.text_buffers[static_cast<size_t>(parameter.index)] = next;
        lay_guard(next + buffer_bytes(parameter), kTextGuardBytes);
        next += buffer_bytes(parameter) + kTextGuardBytes;
    }
    return true;
}

bool fits_name_only(const Instance& instance, const ParameterInfo& parameter) {
    return instance.texts_move && parameter.kind != ParameterKind::kString;
}

FenceOptions text_fence(const MemoryOptions& options) {
    // All of it is compared after each call, and there may be hundreds of texts.
    return {options.side, 1, std::min<size_t>(options.room_bytes, 4096), true};
}

bool allocate_fenced(Instance& instance, const Plugin& owner, const MemoryOptions& options) {
    const auto bytes = static_cast<size_t>(owner.total_size);
    instance.texts_move = options.texts_move;
    instance.fenced_block = FencedMemory(bytes, {options.side, 8, options.room_bytes, false});
    instance.block = reinterpret_cast<std::byte*>(instance.fenced_block.data());
    if (!instance.block) return false;
    std::memset(instance.block, options.fill, bytes);
    instance.text_buffers.assign(owner.parameters.size(), nullptr);
    instance.fenced_texts.resize(owner.parameters.size());
    for (const ParameterInfo& parameter : owner.parameters) {
        if (!is_text(parameter)) continue;
        const auto index = static_cast<size_t>(parameter.index);
        instance.fenced_texts[index] = FencedMemory(buffer_bytes(parameter), text_fence(options));
        instance.text_buffers[index] = instance.fenced_texts[index].data();
        if (!instance.text_buffers[index]) return false;
        *instance.text_buffers[index] = '\0';
    }
    return true;
}

/// Moves the buffer of a parameter to a new place for `text`. Keeps the old place if no memory is left.
void move_text(Instance& instance, const ParameterInfo& parameter, const std::string& text) {
    const auto index = static_cast<size_t>(parameter.index);
    const bool tight = fits_name_only(instance, parameter);
    FencedMemory& current = instance.fenced_texts[index];
    FencedMemory moved(tight ? text.size() + 1 : buffer_bytes(parameter), {FenceSide::kBehind, 1, 0, true});
    if (!moved.data()) return;
    std::swap(current, moved);
    moved.forbid();
    instance.text_buffers[index] = current.data();
    if (instance.retired_texts.size() == kMostRetiredTexts)
        instance.retired_texts.erase(instance.retired_texts.begin());
    instance.retired_texts.push_back({parameter.index, std::move(moved)});
}

std::vector<std::string> find_damage(Instance& instance, const Plugin& owner) {
    std::vector<std::string> damages;
    const auto check = [&damages](FencedMemory& memory, const std::string& of_what) {
        if (const std::optional<FenceDamage> damage = memory.take_damage())
            damages.push_back(fmt::format("wrote {} byte{} at offset {} of {}{}", damage->bytes,
                                          damage->bytes == 1 ? "" : "s", damage->offset, memory.size(), of_what));
    };
    check(instance.fenced_block, "");
    for (const ParameterInfo& parameter : owner.parameters)
        check(instance.fenced_texts[static_cast<size_t>(parameter.index)],
              fmt::format(", the text of '{}'", parameter.name));
    return damages;
}

void allocate_block(Instance& instance, size_t bytes, uint8_t fill) {
    instance.memory = std::make_unique<std::byte[]>(bytes + kBlockGuardBytes + 24);
    const auto address = reinterpret_cast<uintptr_t>(instance.memory.get());
    instance.block = instance.memory.get() + ((address + 15) / 16 * 16 + 8 - address);
    std::memset(instance.block, fill, bytes);
    lay_guard(instance.block + bytes, kBlockGuardBytes);
}

}  // namespace

bool allocate_memory(Instance& instance, const MemoryOptions& options) {
    const Plugin& owner = plugin(instance.plugin);
    if (options.fenced) {
        if (!allocate_fenced(instance, owner, options)) return false;
    } else {
        if (!allocate_texts(instance, owner.parameters)) return false;
        allocate_block(instance, static_cast<size_t>(owner.total_size), options.fill);
    }
    for (const ParameterInfo& parameter : owner.parameters)
        write_value(instance, parameter, *encode_value(parameter, parameter.initial));
    return true;
}

uint32_t read_slot(const Instance& instance, int32_t index) {
    uint32_t bits;
    std::memcpy(&bits, instance.block + 4 * static_cast<size_t>(index), sizeof bits);
    return bits;
}

void write_slot(Instance& instance, int32_t index, uint32_t bits) {
    std::memcpy(instance.block + 4 * static_cast<size_t>(index), &bits, sizeof bits);
}

bool write_value(Instance& instance, const ParameterInfo& parameter, const SlotValue& value) {
    const uint32_t before = read_slot(instance, parameter.index);
    char* buffer = instance.text_buffers[static_cast<size_t>(parameter.index)];
    const bool text_differs = buffer && value.text != buffer;
    if (text_differs && instance.texts_move) {
        move_text(instance, parameter, value.text);
        buffer = instance.text_buffers[static_cast<size_t>(parameter.index)];
    }
    const uint32_t bits = buffer ? text_address(buffer) : value.bits;
    const bool changed = bits != before || text_differs;
    write_slot(instance, parameter.index, bits);
    if (buffer) std::memcpy(buffer, value.text.c_str(), value.text.size() + 1);
    return changed;
}

Result<ParameterValue> read_value(const Instance& instance, const ParameterInfo& parameter) {
    const uint32_t bits = read_slot(instance, parameter.index);
    const auto number = static_cast<int32_t>(bits);
    switch (parameter.kind) {
        case ParameterKind::kInt:
            return ParameterValue(number);
        case ParameterKind::kFloat:
            return ParameterValue(double{std::bit_cast<float>(bits)});
        case ParameterKind::kBool:
            return ParameterValue(number != 0);
        case ParameterKind::kRadio:
            if (bits >= parameter.choices.size()) return ParameterValue(number);
            return ParameterValue(parameter.choices[bits]);
        default:
            break;
    }
    const char* buffer = instance.text_buffers[static_cast<size_t>(parameter.index)];
    if (bits == 0) return ParameterValue(std::string());
    if (bits != text_address(buffer))
        return Error{fmt::format("parameter '{}': its slot no longer holds the address of its text", parameter.name)};
    const size_t room = fits_name_only(instance, parameter)
                            ? instance.fenced_texts[static_cast<size_t>(parameter.index)].size()
                            : buffer_bytes(parameter);
    return ParameterValue(std::string(buffer, strnlen(buffer, room)));
}

std::vector<std::string> repair_guards(Instance& instance) {
    std::vector<std::string> damages;
    const Plugin& owner = plugin(instance.plugin);
    if (instance.fenced_block.data()) return find_damage(instance, owner);
    if (!guard_is_intact(instance.block + owner.total_size, kBlockGuardBytes)) {
        damages.push_back(fmt::format("wrote past the end of its block of {} bytes", owner.total_size));
        lay_guard(instance.block + owner.total_size, kBlockGuardBytes);
    }
    for (const ParameterInfo& parameter : owner.parameters) {
        char* buffer = instance.text_buffers[static_cast<size_t>(parameter.index)];
        const size_t bytes = buffer_bytes(parameter);
        if (!buffer || guard_is_intact(buffer + bytes, kTextGuardBytes)) continue;
        damages.push_back(fmt::format("wrote past the {} bytes of the text of '{}'", bytes, parameter.name));
        lay_guard(buffer + bytes, kTextGuardBytes);
    }
    return damages;
}

}  // namespace stage
