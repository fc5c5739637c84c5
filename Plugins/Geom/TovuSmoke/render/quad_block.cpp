#include "quad_block.h"

#include <cmath>
#include <cstddef>
#include <cstring>

#include "../math/fast_sine_cosine.h"
#include "../math/float4.h"
#include "../particles/curves.h"
#include "../particles/prefetch_record.h"

namespace tovu {
namespace {

constexpr float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// The columns of a matrix, which it applies to positions.
struct Mapping {
    Float4 x, y, z, origin;

    explicit Mapping(const float* m)
        : x(load_float4(m)), y(load_float4(m + 4)), z(load_float4(m + 8)), origin(load_float4(m + 12)) {}
    Float4 operator()(Float4 p) const {
        return x * broadcast_lane<0>(p) + y * broadcast_lane<1>(p) + z * broadcast_lane<2>(p) + origin;
    }
};

/// Writes the four corners from the position and the halves of the diagonals. Each store writes four floats; the next
/// one overwrites the fourth.
/// rising: from the position to the top right corner. falling: from the position to the top left corner.
inline void write_corners(Float4 position, Float4 rising, Float4 falling, float* corners) {
    store(corners, position + falling);
    store(corners + 3, position - rising);
    store(corners + 6, position - falling);
    store(corners + 9, position + rising);
}

// Up to this angle the fast sine and cosine agree with the matrices'. Above it, the matrices' rounding of the angle to
// float radians shows in the corners, so their sine and cosine are used.
constexpr float kMaxFastDegrees = 4096.0f;

/// Sine and cosine of the rotation of each quad of a block.
struct Rotations {
    alignas(16) float sines[kQuadsPerBlock];
    alignas(16) float cosines[kQuadsPerBlock];
};

bool all_fast(const QuadBlock& block) {
    constexpr Int4 kAllButSign = {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX};
    Int4 fast = {-1, -1, -1, -1};
    for (int32_t i = 0; i < block.count; i += 4)
        fast &= masked(load_float4(block.degrees + i), kAllButSign) <= broadcast(kMaxFastDegrees);
    return (fast[0] & fast[1] & fast[2] & fast[3]) != 0;
}

/// Angles above kMaxFastDegrees are rare and computed one by one.
void find_rotations(const QuadBlock& block, Rotations& rotations) {
    for (int32_t i = 0, count = (block.count + 3) & ~3; i < count; ++i) {
        const SineCosine rotation = fast_sine_cosine_degrees(block.degrees[i]);
        rotations.sines[i] = rotation.sine;
        rotations.cosines[i] = rotation.cosine;
    }
    if (all_fast(block)) return;
    for (int32_t i = 0; i < block.count; ++i) {
        if (std::fabs(block.degrees[i]) <= kMaxFastDegrees) continue;
        const SineCosine rotation = sine_cosine_degrees(block.degrees[i]);
        rotations.sines[i] = rotation.sine;
        rotations.cosines[i] = rotation.cosine;
    }
}

constexpr size_t kSizes = offsetof(Particle, size_x);
static_assert(offsetof(Particle, position) == 0 && offsetof(Particle, size_y) == kSizes + 2 * sizeof(float));

/// Calls paint(i) after writing the corners of quad i.
template <bool rotated, bool mapped, class Paint>
void write_quads(const QuadPlacement& placement, QuadBlock& block, float* corners, Paint paint) {
    const Mapping map(mapped ? placement.position_matrix : kIdentity);
    // Scale acts before rotation, so width and height each carry their factor to both axes.
    const Float4 x_by_width = load_float4(placement.axes) * broadcast(placement.scale_x);
    const Float4 y_by_width = load_float4(placement.axes + 4) * broadcast(placement.scale_x);
    const Float4 x_by_height = load_float4(placement.axes) * broadcast(placement.scale_y);
    const Float4 y_by_height = load_float4(placement.axes + 4) * broadcast(placement.scale_y);
    Rotations rotations;
    if constexpr (rotated) find_rotations(block, rotations);
    const DrawEntry* const entries = block.entries;
    const int32_t next_count = block.next_count;
    for (int32_t i = 0, count = block.count; i < count; ++i) {
        if (i < next_count) prefetch_record(entries[kQuadsPerBlock + i].particle);
        const char* const record = reinterpret_cast<const char*>(entries[i].particle);
        const Float4 stored = load_float4(record);  // lane 3 holds velocity.x and is not used
        const Float4 sizes = load_float4(record + kSizes);
        const Float4 position = mapped ? map(stored) : stored;
        Float4 right = x_by_width;
        Float4 up = y_by_height;
        if constexpr (rotated) {
            const Float4 cosine = broadcast(rotations.cosines[i]);
            const Float4 sine = broadcast(rotations.sines[i]);
            right = x_by_width * cosine + y_by_width * sine;
            up = y_by_height * cosine - x_by_height * sine;
        }
        right *= broadcast_lane<0>(sizes);
        up *= broadcast_lane<2>(sizes);
        write_corners(position, up + right, up - right, corners + kFloatsPerQuad * i);
        paint(i);
    }
}

template <class Paint>
void write_quads(const QuadPlacement& placement, QuadBlock& block, float* corners, Paint paint) {
    const bool mapped = placement.position_matrix != nullptr;
    if (placement.rotated && mapped)
        write_quads<true, true>(placement, block, corners, paint);
    else if (placement.rotated)
        write_quads<true, false>(placement, block, corners, paint);
    else if (mapped)
        write_quads<false, true>(placement, block, corners, paint);
    else
        write_quads<false, false>(placement, block, corners, paint);
}

}  // namespace

void gather_block(int32_t first, int32_t draw_count, bool rotated, QuadBlock& block) {
    const auto block_size = [](int32_t left) { return left < kQuadsPerBlock ? left : kQuadsPerBlock; };
    block.entries = draw_list + first;
    block.count = block_size(draw_count - first);
    block.next_count = block_size(draw_count - first - block.count);
    if (first == 0)
        for (int32_t i = 0; i < block.count; ++i) prefetch_record(block.entries[i].particle);
    for (int32_t i = 0; i < block.count; ++i) {
        const Particle& p = *block.entries[i].particle;
        if (rotated) block.degrees[i] = p.rotation + p.path_angle;
        block.age[i] = p.age;
        block.life[i] = p.life;
    }
    for (int32_t i = block.count; i % 4 != 0; ++i) block.degrees[i] = block.age[i] = block.life[i] = 0.0f;
}

QuadPlacement flat_placement(bool rotated) {
    return {nullptr, kIdentity, 1.0f, 1.0f, rotated};
}

QuadPlacement local_billboard_placement(const SmokeInstance& instance, const float* position_matrix, Vector3 scale,
                                        bool rotated) {
    return {position_matrix, instance.billboard_matrix.m, scale.x, scale.y, rotated};
}

QuadPlacement world_billboard_placement(const SmokeInstance& instance, bool rotated) {
    return {nullptr, instance.billboard_matrix.m, 1.0f, 1.0f, rotated};
}

void build_corners(const QuadPlacement& placement, QuadBlock& block, float* corners) {
    write_quads(placement, block, corners, [](int32_t) {});
}

void build_quads(const SmokeInstance& instance, const QuadPlacement& placement, float alpha_scale, QuadBlock& block,
                 float* corners, uint8_t* colors) {
    alignas(16) uint32_t index[kQuadsPerBlock];
    for (int32_t i = 0; i < block.count; i += 4)
        store(index + i, color_indices(load_float4(block.age + i), load_float4(block.life + i)));
    write_quads(placement, block, corners, [&instance, alpha_scale, &index, colors](int32_t i) {
        const float alpha = instance.alpha_table.alpha[alpha_index(index[i])] * alpha_scale;
        const uint32_t rgb = color_entry(instance, index[i]) & 0x00FFFFFFu;
        const uint32_t rgba = rgb | static_cast<uint32_t>(static_cast<int32_t>(alpha)) << 24;
        const uint32_t at_corners[4] = {rgba, rgba, rgba, rgba};
        std::memcpy(colors + kBytesPerQuad * i, at_corners, kBytesPerQuad);
    });
}

}  // namespace tovu
