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

/// The columns of a matrix that maps positions.
struct Mapping {
    Float4 x, y, z, origin;

    explicit Mapping(const float* m)
        : x(load_float4(m)), y(load_float4(m + 4)), z(load_float4(m + 8)), origin(load_float4(m + 12)) {}
    Float4 operator()(Float4 p) const {
        return x * broadcast_lane<0>(p) + y * broadcast_lane<1>(p) + z * broadcast_lane<2>(p) + origin;
    }
};

/// The four corners from the position and half the quad's diagonals. Each store is four floats, the last of which the
/// next one overwrites.
/// rising: from the position to the top right; its opposite leads to the bottom left.
/// falling: to the top left; its opposite leads to the bottom right.
inline void write_corners(Float4 position, Float4 rising, Float4 falling, float* corners) {
    store(corners, position + falling);
    store(corners + 3, position - rising);
    store(corners + 6, position - falling);
    store(corners + 9, position + rising);
}

// Beyond it, rounding an angle to float radians, as a matrix turns by it, shows in the corners: there the matrices'
// turn is the right one.
constexpr float kLargestPlainTurn = 4096.0f;  // degrees

/// Of the turns of a block's quads.
struct Turns {
    alignas(16) float sines[kQuadsPerBlock];
    alignas(16) float cosines[kQuadsPerBlock];
};

bool all_plain(const QuadBlock& block) {
    constexpr Int4 kAllButSign = {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX};
    Int4 plain = {-1, -1, -1, -1};
    for (int32_t i = 0; i < block.count; i += 4)
        plain &= masked(load_float4(block.degrees + i), kAllButSign) <= broadcast(kLargestPlainTurn);
    return (plain[0] & plain[1] & plain[2] & plain[3]) != 0;
}

/// Turns beyond kLargestPlainTurn are rare and made one by one.
void find_turns(const QuadBlock& block, Turns& turns) {
    for (int32_t i = 0, count = (block.count + 3) & ~3; i < count; ++i) {
        const SineCosine turn = fast_sine_cosine_degrees(block.degrees[i]);
        turns.sines[i] = turn.sine;
        turns.cosines[i] = turn.cosine;
    }
    if (all_plain(block)) return;
    for (int32_t i = 0; i < block.count; ++i) {
        if (std::fabs(block.degrees[i]) <= kLargestPlainTurn) continue;
        const SineCosine turn = sine_cosine_degrees(block.degrees[i]);
        turns.sines[i] = turn.sine;
        turns.cosines[i] = turn.cosine;
    }
}

constexpr size_t kSizes = offsetof(Particle, size_x);
static_assert(offsetof(Particle, position) == 0 && offsetof(Particle, size_y) == kSizes + 2 * sizeof(float));

/// paint(i) is called for each quad.
template <bool turned, bool mapped, class Paint>
void write_quads(const QuadPlacement& placement, QuadBlock& block, float* corners, Paint paint) {
    const Mapping map(mapped ? placement.position_matrix : kIdentity);
    // A turn acts on corners that are scaled already: each of its columns has one factor.
    const Float4 x_by_width = load_float4(placement.axes) * broadcast(placement.scale_x);
    const Float4 y_by_width = load_float4(placement.axes + 4) * broadcast(placement.scale_x);
    const Float4 x_by_height = load_float4(placement.axes) * broadcast(placement.scale_y);
    const Float4 y_by_height = load_float4(placement.axes + 4) * broadcast(placement.scale_y);
    Turns turns;
    if constexpr (turned) find_turns(block, turns);
    const DrawEntry* const entries = block.entries;
    const int32_t next_count = block.next_count;
    for (int32_t i = 0, count = block.count; i < count; ++i) {
        if (i < next_count) prefetch_record(entries[kQuadsPerBlock + i].particle);
        const char* const record = reinterpret_cast<const char*>(entries[i].particle);
        const Float4 stored = load_float4(record);  // its fourth is the first of the velocity
        const Float4 sizes = load_float4(record + kSizes);
        const Float4 position = mapped ? map(stored) : stored;
        Float4 right = x_by_width;
        Float4 up = y_by_height;
        if constexpr (turned) {
            const Float4 cosine = broadcast(turns.cosines[i]);
            const Float4 sine = broadcast(turns.sines[i]);
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
    if (placement.turned && mapped)
        write_quads<true, true>(placement, block, corners, paint);
    else if (placement.turned)
        write_quads<true, false>(placement, block, corners, paint);
    else if (mapped)
        write_quads<false, true>(placement, block, corners, paint);
    else
        write_quads<false, false>(placement, block, corners, paint);
}

}  // namespace

void gather_block(int32_t first, int32_t draw_count, bool turned, QuadBlock& block) {
    const auto of_block = [](int32_t left) { return left < kQuadsPerBlock ? left : kQuadsPerBlock; };
    block.entries = draw_list + first;
    block.count = of_block(draw_count - first);
    block.next_count = of_block(draw_count - first - block.count);
    if (first == 0)
        for (int32_t i = 0; i < block.count; ++i) prefetch_record(block.entries[i].particle);
    for (int32_t i = 0; i < block.count; ++i) {
        const Particle& p = *block.entries[i].particle;
        if (turned) block.degrees[i] = p.rotation + p.path_angle;
        block.age[i] = p.age;
        block.life[i] = p.life;
    }
    for (int32_t i = block.count; i % 4 != 0; ++i) block.degrees[i] = block.age[i] = block.life[i] = 0.0f;
}

QuadPlacement flat_placement(bool turned) {
    return {nullptr, kIdentity, 1.0f, 1.0f, turned};
}

QuadPlacement local_billboard_placement(const SmokeInstance& instance, const float* position_matrix, Vector3 scale,
                                        bool turned) {
    return {position_matrix, instance.billboard_matrix.m, scale.x, scale.y, turned};
}

QuadPlacement world_billboard_placement(const SmokeInstance& instance, bool turned) {
    return {nullptr, instance.billboard_matrix.m, 1.0f, 1.0f, turned};
}

void build_corners(const QuadPlacement& placement, QuadBlock& block, float* corners) {
    write_quads(placement, block, corners, [](int32_t) {});
}

void build_quads(const SmokeInstance& instance, const QuadPlacement& placement, float alpha_scale, QuadBlock& block,
                 float* corners, uint8_t* colors) {
    alignas(16) uint32_t index[kQuadsPerBlock];
    for (int32_t i = 0; i < block.count; i += 4)
        store(index + i, color_indices(color_phases(load_float4(block.age + i), load_float4(block.life + i))));
    write_quads(placement, block, corners, [&instance, alpha_scale, &index, colors](int32_t i) {
        const float alpha = instance.alpha_table.alpha[alpha_index(index[i])] * alpha_scale;
        const uint32_t rgb = color_entry(instance, index[i]) & 0x00FFFFFFu;
        const uint32_t rgba = rgb | static_cast<uint32_t>(static_cast<int32_t>(alpha)) << 24;
        const uint32_t of_corners[4] = {rgba, rgba, rgba, rgba};
        std::memcpy(colors + kBytesPerQuad * i, of_corners, kBytesPerQuad);
    });
}

}  // namespace tovu
