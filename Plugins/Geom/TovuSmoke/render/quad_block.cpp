#include "quad_block.h"

#include <cmath>
#include <cstddef>
#include <cstring>

#include "sine_cosine.h"

namespace tovu {
namespace {

constexpr int32_t kFetchAhead = 16;  // records
constexpr float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// Four floats that are worked on as one: a column of a matrix, or three coordinates and whatever comes fourth.
using Four = float[4];

void map_positions(const float* m, QuadBlock& block) {
    for (int32_t i = 0; i < block.count; ++i) {
        float* const p = block.position[i];
        const float x = p[0], y = p[1], z = p[2];
        Four mapped;
        for (int32_t row = 0; row < 4; ++row) mapped[row] = m[row] * x + m[4 + row] * y + m[8 + row] * z + m[12 + row];
        std::memcpy(p, mapped, sizeof(mapped));
    }
}

/// The four corners from the position and half the quad's diagonals. Each store is four floats, the last of which the
/// next one overwrites.
/// rising: from the position to the top right; its opposite leads to the bottom left.
/// falling: to the top left; its opposite leads to the bottom right.
inline void write_corners(const Four& position, const Four& rising, const Four& falling, float* corners) {
    Four top_left, bottom_left, bottom_right, top_right;
    for (int32_t row = 0; row < 4; ++row) {
        top_left[row] = position[row] + falling[row];
        bottom_left[row] = position[row] - rising[row];
        bottom_right[row] = position[row] - falling[row];
        top_right[row] = position[row] + rising[row];
    }
    std::memcpy(corners, top_left, sizeof(Four));
    std::memcpy(corners + 3, bottom_left, sizeof(Four));
    std::memcpy(corners + 6, bottom_right, sizeof(Four));
    std::memcpy(corners + 9, top_right, sizeof(Four));
}

/// An axis of the quad in drawing coordinates, times a factor.
void scaled_axis(const float* axis, float factor, Four& scaled) {
    for (int32_t row = 0; row < 4; ++row) scaled[row] = axis[row] * factor;
}

void write_plain_quads(const QuadPlacement& placement, const QuadBlock& block, float* corners) {
    Four x_axis, y_axis;
    scaled_axis(placement.axes, placement.scale_x, x_axis);
    scaled_axis(placement.axes + 4, placement.scale_y, y_axis);
    for (int32_t i = 0; i < block.count; ++i) {
        const float half_width = block.sizes[i][0];
        const float half_height = block.sizes[i][2];
        Four rising, falling;
        for (int32_t row = 0; row < 4; ++row) {
            const float right = x_axis[row] * half_width;
            const float up = y_axis[row] * half_height;
            rising[row] = up + right;
            falling[row] = up - right;
        }
        write_corners(block.position[i], rising, falling, corners + kFloatsPerQuad * i);
    }
}

// Beyond it, rounding an angle to float radians, as a matrix turns by it, shows in the corners: there the matrices'
// turn is the right one.
constexpr float kLargestPlainTurn = 4096.0f;  // degrees

/// Sine and cosine of the turns of a block. Turns beyond kLargestPlainTurn are rare and made one by one.
void find_turns(const QuadBlock& block, float* sines, float* cosines) {
    int32_t beyond = 0;
    for (int32_t i = 0; i < block.count; ++i) {
        const SineCosine turn = sine_cosine(block.degrees[i]);
        sines[i] = turn.sine;
        cosines[i] = turn.cosine;
        beyond |= !(std::fabs(block.degrees[i]) <= kLargestPlainTurn);
    }
    if (beyond == 0) return;
    for (int32_t i = 0; i < block.count; ++i) {
        if (std::fabs(block.degrees[i]) <= kLargestPlainTurn) continue;
        const Turn turn = turn_of(block.degrees[i]);
        sines[i] = turn.sine;
        cosines[i] = turn.cosine;
    }
}

void write_turned_quads(const QuadPlacement& placement, const QuadBlock& block, float* corners) {
    alignas(16) float sines[kQuadsPerBlock];
    alignas(16) float cosines[kQuadsPerBlock];
    find_turns(block, sines, cosines);
    // The turn acts on corners that are scaled already: each of its columns has one factor.
    Four x_by_width, y_by_width, x_by_height, y_by_height;
    scaled_axis(placement.axes, placement.scale_x, x_by_width);
    scaled_axis(placement.axes + 4, placement.scale_x, y_by_width);
    scaled_axis(placement.axes, placement.scale_y, x_by_height);
    scaled_axis(placement.axes + 4, placement.scale_y, y_by_height);
    for (int32_t i = 0; i < block.count; ++i) {
        const float half_width = block.sizes[i][0];
        const float half_height = block.sizes[i][2];
        Four rising, falling;
        for (int32_t row = 0; row < 4; ++row) {
            const float right = (x_by_width[row] * cosines[i] + y_by_width[row] * sines[i]) * half_width;
            const float up = (y_by_height[row] * cosines[i] - x_by_height[row] * sines[i]) * half_height;
            rising[row] = up + right;
            falling[row] = up - right;
        }
        write_corners(block.position[i], rising, falling, corners + kFloatsPerQuad * i);
    }
}

// Parts of the record that are copied as one.
static_assert(offsetof(Particle, position) == 0 && sizeof(Particle) >= sizeof(Four));
static_assert(offsetof(Particle, size_y) == offsetof(Particle, size_x) + 2 * sizeof(float));

inline void gather_quad(const Particle& p, int32_t i, bool turned, QuadBlock& block) {
    std::memcpy(block.position[i], &p, sizeof(Four));
    std::memcpy(block.sizes[i], reinterpret_cast<const char*>(&p) + offsetof(Particle, size_x), sizeof(Four));
    if (turned) block.degrees[i] = p.rotation + p.path_angle;
    block.age[i] = p.age;
    block.life[i] = p.life;
}

}  // namespace

void gather_block(int32_t first, int32_t draw_count, bool turned, QuadBlock& block) {
    const int32_t left = draw_count - first;
    const DrawEntry* const entries = draw_list + first;
    block.count = left < kQuadsPerBlock ? left : kQuadsPerBlock;
    const int32_t can_fetch = left - kFetchAhead < block.count ? left - kFetchAhead : block.count;
    int32_t i = 0;
    for (; i < can_fetch; ++i) {
        __builtin_prefetch(&entries[i + kFetchAhead].particle->position);  // a record lies across two cache lines
        __builtin_prefetch(&entries[i + kFetchAhead].particle->life);
        gather_quad(*entries[i].particle, i, turned, block);
    }
    for (; i < block.count; ++i) gather_quad(*entries[i].particle, i, turned, block);
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
    if (placement.position_matrix != nullptr) map_positions(placement.position_matrix, block);
    if (placement.turned)
        write_turned_quads(placement, block, corners);
    else
        write_plain_quads(placement, block, corners);
}

}  // namespace tovu
