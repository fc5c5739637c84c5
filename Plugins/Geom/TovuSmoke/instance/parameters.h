// The parameter slots as typed fields, their indices, and the functions that read them.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "../host/parameter_slots.h"

namespace tovu {

constexpr int32_t kMaxParticles = 25000;  // records of one instance; quads in the shared drawing arrays

// Choices of the radio parameters, by position.
enum SpawnType : int32_t { kSpawnCube = 0, kSpawnSphere = 1, kSpawnContainer = 2, kSpawnImage = 3 };
enum Reference : int32_t { kReferenceLocal = 0, kReferenceWorld = 1 };
enum Billboard : int32_t { kBillboardNone = 0, kBillboardParticle = 1 };

/// Index of each parameter: its position in registration order, and its slot.
enum ParameterIndex : int32_t {
#define PARAM_INT(name, label, initial, minimum, maximum) kIndex_##name,
#define PARAM_FLOAT(name, label, initial, minimum, maximum) kIndex_##name,
#define PARAM_BOOL(name, label, initial) kIndex_##name,
#define PARAM_RADIO(name, label, initial, ...) kIndex_##name,
#define PARAM_STRING(name, label, initial, longest) kIndex_##name,
#define PARAM_CONTAINER(name, label) kIndex_##name,
#define PARAM_IMAGE(name, label) kIndex_##name,
#include "parameters.def"
    kParameterCount
};

/// The slots as the host fills them, 32 bits each. Read them through the functions of `param`, which replace invalid
/// values.
struct ParameterSlots {
#define PARAM_INT(name, label, initial, minimum, maximum) int32_t name;
#define PARAM_FLOAT(name, label, initial, minimum, maximum) float name;
#define PARAM_BOOL(name, label, initial) int32_t name;
#define PARAM_RADIO(name, label, initial, ...) int32_t name;
#define PARAM_STRING(name, label, initial, longest) uint32_t name;
#define PARAM_CONTAINER(name, label) uint32_t name;
#define PARAM_IMAGE(name, label) uint32_t name;
#include "parameters.def"
};

static_assert(kParameterCount == 60, "saved scenes and the block's layout rely on the number of parameters");
static_assert(sizeof(ParameterSlots) == 4 * kParameterCount, "each parameter has one 32-bit slot, without gaps");
static_assert(offsetof(ParameterSlots, spawn_image_bool) == 4 * kIndex_spawn_image_bool,
              "a parameter's index is the index of its slot");

/// One typed reader per parameter, named as registered. Values outside the registered range are used as they are, with
/// these exceptions, which keep invalid bit patterns out of the computations:
/// - an infinite float or NaN reads as the parameter's initial value;
/// - `number_of_particles` is clamped to 0…kMaxParticles;
/// - `spawn_type`, `reference` and `billboard` outside their choices read as choice 0.
/// Bool: every value but 0 is on. Text: the slot is an address below 4 GiB; 0 reads as "".
namespace param {

/// `value`, or `fallback` when it is infinite or NaN.
inline float finite_or(float value, float fallback) {
    return std::isfinite(value) ? value : fallback;
}

#define PARAM_INT(name, label, initial, minimum, maximum)                                            \
    inline int32_t name(const ParameterSlots& slots) {                                               \
        return slots.name < (minimum) ? (minimum) : slots.name > (maximum) ? (maximum) : slots.name; \
    }
#define PARAM_FLOAT(name, label, initial, minimum, maximum) \
    inline float name(const ParameterSlots& slots) {        \
        return finite_or(slots.name, initial);              \
    }
#define PARAM_BOOL(name, label, initial)            \
    inline bool name(const ParameterSlots& slots) { \
        return slots.name != 0;                     \
    }
#define PARAM_RADIO(name, label, initial, ...)                \
    inline int32_t name##_slot(const ParameterSlots& slots) { \
        return slots.name;                                    \
    }
#define PARAM_STRING(name, label, initial, longest)        \
    inline const char* name(const ParameterSlots& slots) { \
        return tovu_slot_text(slots.name);                 \
    }
#define PARAM_CONTAINER(name, label)                       \
    inline const char* name(const ParameterSlots& slots) { \
        return tovu_slot_text(slots.name);                 \
    }
#define PARAM_IMAGE(name, label)                           \
    inline const char* name(const ParameterSlots& slots) { \
        return tovu_slot_text(slots.name);                 \
    }
#include "parameters.def"

inline SpawnType spawn_type(const ParameterSlots& slots) {
    const int32_t choice = spawn_type_slot(slots);
    return choice < kSpawnCube || choice > kSpawnImage ? kSpawnCube : static_cast<SpawnType>(choice);
}
inline Reference reference(const ParameterSlots& slots) {
    return reference_slot(slots) == kReferenceWorld ? kReferenceWorld : kReferenceLocal;
}
inline Billboard billboard(const ParameterSlots& slots) {
    return billboard_slot(slots) == kBillboardParticle ? kBillboardParticle : kBillboardNone;
}
inline bool spawn_cont_ref_plane_is_xz(const ParameterSlots& slots) {
    return spawn_cont_ref_plane_slot(slots) != 0;
}
inline bool spawn_cont_coord_is_world(const ParameterSlots& slots) {
    return spawn_cont_coord_slot(slots) != 0;
}

}  // namespace param
}  // namespace tovu
