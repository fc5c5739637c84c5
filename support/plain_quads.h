// Plain version of the quads: one at a time, with the matrix operations that define them and the library's sine and
// cosine.
#pragma once

#include <array>
#include <cstdint>

#include "instance/smoke_instance.h"
#include "math/matrix.h"
#include "render/quads.h"

namespace plain {

struct Quad {
    std::array<Vector3, 4> corners;  // top left, bottom left, bottom right, top right
    std::array<uint8_t, 4> rgba;
};

inline std::array<Vector3, 4> corner_offsets(const Particle& p) {
    return {{{-p.size_x, p.size_y, 0}, {-p.size_x, -p.size_y, 0}, {p.size_x, -p.size_y, 0}, {p.size_x, p.size_y, 0}}};
}

inline uint8_t low_byte_of(float value) {
    return static_cast<uint8_t>(static_cast<int32_t>(value) & 0xFF);
}

/// The quad that immediate mode sends: the colour of the record; rotated if the particle has an angle; a scale factor
/// of 0 leaves its axis unscaled.
inline Quad immediate_quad(const tovu::SmokeInstance& instance, const Particle& p, float opacity) {
    Quad quad{corner_offsets(p), {p.color[0], p.color[1], p.color[2], low_byte_of(p.alpha * opacity)}};
    const bool turned = p.rotation != 0.0f || p.path_angle != 0.0f;
    if (instance.draw_mode == tovu::kDrawLocalFlat || instance.draw_mode == tovu::kDrawWorldFlat) {
        tovu::Matrix4 matrix;
        tovu::translate(matrix, p.position);
        tovu::rotate_z(matrix, p.rotation + p.path_angle);
        for (Vector3& corner : quad.corners)
            corner = turned ? tovu::transform(matrix, corner) : tovu::operator+(corner, p.position);
        return quad;
    }
    const bool local = instance.draw_mode == tovu::kDrawLocalBillboard;
    const Vector3 position = local ? tovu::transform(instance.transformation_matrix, p.position) : p.position;
    tovu::Matrix4 matrix = instance.billboard_matrix;
    if (turned) tovu::rotate_z(matrix, p.rotation + p.path_angle);
    if (local) tovu::scale(matrix, instance.abs_scale);
    for (Vector3& corner : quad.corners) corner = tovu::operator+(tovu::transform(matrix, corner), position);
    return quad;
}

/// The quad that the array builders write: the colour of the tables; rotated if any rotation parameter is set; a scale
/// factor of 0 is applied like any other.
inline Quad array_quad(const tovu::SmokeInstance& instance, const Particle& p, float opacity) {
    const float alpha_scale = opacity * 255.0f;
    const auto color = static_cast<int32_t>(p.age * 1024.0f / p.life);
    const auto alpha = static_cast<int32_t>(p.age * 512.0f / p.life);
    const uint8_t* rgb = instance.color_table.rgb[color];
    Quad quad{corner_offsets(p),
              {rgb[0], rgb[1], rgb[2], low_byte_of(instance.alpha_table.alpha[alpha] * alpha_scale)}};
    const tovu::ParameterSlots& slots = instance.parameters;
    const bool turned = slots.rot_start != 0 || slots.rot_start_spread != 0 || slots.rot_change != 0 ||
                        slots.rot_change_spread != 0 || slots.rot_follow_path;
    const float turn = p.rotation + p.path_angle;
    if (instance.draw_mode == tovu::kDrawLocalFlat || instance.draw_mode == tovu::kDrawWorldFlat) {
        tovu::Matrix4 matrix;
        tovu::translate(matrix, p.position);
        if (turned) tovu::rotate_z(matrix, turn);
        for (Vector3& corner : quad.corners) corner = tovu::transform(matrix, corner);
        return quad;
    }
    const bool local = instance.draw_mode == tovu::kDrawLocalBillboard;
    const Vector3 position = local ? tovu::transform(instance.transformation_copy, p.position) : p.position;
    tovu::Matrix4 matrix = instance.billboard_matrix;
    if (turned) tovu::rotate_z(matrix, turn);
    if (local) {
        for (int row = 0; row < 4; ++row) {
            matrix.m[row] *= instance.abs_scale.x;
            matrix.m[4 + row] *= instance.abs_scale.y;
            matrix.m[8 + row] *= instance.abs_scale.z;
        }
    }
    for (Vector3& corner : quad.corners) corner = tovu::operator+(tovu::transform(matrix, corner), position);
    return quad;
}

}  // namespace plain
