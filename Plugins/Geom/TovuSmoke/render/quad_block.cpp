#include "quad_block.h"

#include "sine_cosine.h"

namespace tovu {
namespace {

constexpr int32_t kFetchAhead = 12;  // records
constexpr float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// Positions have a fourth float so that one vector holds one of them.
struct QuadBlock {
    alignas(16) float position[kQuadsPerBlock][4];
    alignas(16) float half_width[kQuadsPerBlock];
    alignas(16) float half_height[kQuadsPerBlock];
    alignas(16) float degrees[kQuadsPerBlock];
    alignas(16) float sine[kQuadsPerBlock];
    alignas(16) float cosine[kQuadsPerBlock];
};

void gather(int32_t first, int32_t count, int32_t fetch_end, QuadBlock& block) {
    for (int32_t i = 0; i < count; ++i) {
        const int32_t ahead = first + i + kFetchAhead < fetch_end ? first + i + kFetchAhead : fetch_end - 1;
        __builtin_prefetch(&draw_list[ahead].particle->position);  // a record lies across two cache lines
        __builtin_prefetch(&draw_list[ahead].particle->life);
        const Particle& p = *draw_list[first + i].particle;
        block.position[i][0] = p.position.x;
        block.position[i][1] = p.position.y;
        block.position[i][2] = p.position.z;
        block.position[i][3] = 0.0f;
        block.half_width[i] = p.size_x;
        block.half_height[i] = p.size_y;
        block.degrees[i] = plain_degrees(p.rotation + p.path_angle);
    }
}

/// Maps the positions through an OpenGL matrix, as `transform` does.
void map_positions(const float* m, int32_t count, QuadBlock& block) {
    for (int32_t i = 0; i < count; ++i) {
        float* const p = block.position[i];
        const float x = p[0], y = p[1], z = p[2];
        for (int32_t row = 0; row < 4; ++row) p[row] = m[row] * x + m[4 + row] * y + m[8 + row] * z + m[12 + row];
    }
}

/// The four corners from the images of half the width and half the height.
void write_corners(const float* position, const float* right, const float* up, float* corners) {
    float falling[4];  // toward the top left; its opposite toward the bottom right
    float rising[4];   // toward the top right; its opposite toward the bottom left
    for (int32_t row = 0; row < 4; ++row) falling[row] = up[row] - right[row];
    for (int32_t row = 0; row < 4; ++row) rising[row] = up[row] + right[row];
    for (int32_t row = 0; row < 4; ++row) corners[row] = position[row] + falling[row];
    for (int32_t row = 0; row < 4; ++row) corners[3 + row] = position[row] - rising[row];
    for (int32_t row = 0; row < 4; ++row) corners[6 + row] = position[row] - falling[row];
    for (int32_t row = 0; row < 4; ++row) corners[9 + row] = position[row] + rising[row];
}

void write_plain_corners(const QuadPlacement& placement, const QuadBlock& block, int32_t count, float* corners) {
    const float* const x_axis = placement.axes;
    const float* const y_axis = placement.axes + 4;
    for (int32_t i = 0; i < count; ++i) {
        float right[4];
        float up[4];
        for (int32_t row = 0; row < 4; ++row) right[row] = x_axis[row] * block.half_width[i];
        for (int32_t row = 0; row < 4; ++row) up[row] = y_axis[row] * block.half_height[i];
        write_corners(block.position[i], right, up, corners + kFloatsPerQuad * i);
    }
}

void write_turned_corners(const QuadPlacement& placement, const QuadBlock& block, int32_t count, float* corners) {
    const float* const x_axis = placement.axes;
    const float* const y_axis = placement.axes + 4;
    for (int32_t i = 0; i < count; ++i) {
        const float s = block.sine[i];
        const float c = block.cosine[i];
        float right[4];
        float up[4];
        for (int32_t row = 0; row < 4; ++row) right[row] = (x_axis[row] * c + y_axis[row] * s) * block.half_width[i];
        for (int32_t row = 0; row < 4; ++row) up[row] = (y_axis[row] * c - x_axis[row] * s) * block.half_height[i];
        write_corners(block.position[i], right, up, corners + kFloatsPerQuad * i);
    }
}

}  // namespace

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

void build_corners(const QuadPlacement& placement, int32_t first, int32_t count, int32_t fetch_end, float* corners) {
    QuadBlock block;
    gather(first, count, fetch_end, block);
    if (placement.position_matrix != nullptr) map_positions(placement.position_matrix, count, block);
    for (int32_t i = 0; i < count; ++i) {
        block.half_width[i] *= placement.scale_x;
        block.half_height[i] *= placement.scale_y;
    }
    if (!placement.turned) {
        write_plain_corners(placement, block, count, corners);
        return;
    }
    for (int32_t i = 0; i < count; ++i) {
        const SineCosine turn = sine_cosine(block.degrees[i]);
        block.sine[i] = turn.sine;
        block.cosine[i] = turn.cosine;
    }
    write_turned_corners(placement, block, count, corners);
}

}  // namespace tovu
