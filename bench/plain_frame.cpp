#include "plain_frame.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "particles/curves.h"
#include "particles/emission.h"
#include "plain_quads.h"
#include "plain_step.h"
#include "render/draw_list.h"
#include "render/quad_arrays.h"
#include "services/host_queries.h"

namespace bench {
namespace {

using tovu::operator+;  // NOLINT(misc-unused-using-decls): the check does not see operators
using tovu::operator-;  // NOLINT(misc-unused-using-decls)
using tovu::operator*;  // NOLINT(misc-unused-using-decls)

void write_quad(int32_t quad, const plain::Quad& from) {
    std::memcpy(tovu::quad_vertices + tovu::kFloatsPerQuad * quad, from.corners.data(), sizeof from.corners);
    for (int corner = 0; corner < 4; ++corner)
        std::memcpy(tovu::quad_colors + tovu::kBytesPerQuad * quad + 4 * corner, from.rgba.data(), 4);
}

}  // namespace

void plain_step(tovu::SmokeInstance& block) {
    block.birth_accumulator += static_cast<float>(block.time_step);
    const float period = 1.0f / tovu::param::birth_rate(block.parameters);
    const auto births = static_cast<int32_t>(block.birth_accumulator / period);
    tovu::emit_particles(block, births);
    block.birth_accumulator -= static_cast<float>(births) * period;
    plain::move_particles(block);
}

void plain_collect(tovu::SmokeInstance& block) {
    const int32_t camera = tovu::host::render_camera();
    const tovu::Matrix4 to_local = tovu::host::inverse_matrix(block.container_handle);
    const Vector3 eye = tovu::transform(to_local, tovu::host::camera_position(camera));
    Vector3 view =
        tovu::transform(to_local, tovu::host::camera_position(camera) + tovu::host::camera_direction(camera)) - eye;
    tovu::normalize(view);
    block.draw_count = 0;
    for (Particle* p = block.active_head; p != nullptr; p = p->next) {
        const float depth = tovu::dot(view, p->position - eye);
        tovu::draw_list[block.draw_count++] = {p, static_cast<int32_t>(-depth * 1000.0f)};
    }
    std::stable_sort(tovu::draw_list, tovu::draw_list + block.draw_count,
                     [](const auto& a, const auto& b) { return a.key < b.key; });
}

void build_plain(tovu::SmokeInstance& block) {
    for (int32_t i = 0; i < block.draw_count; ++i)
        write_quad(i, plain::array_quad(block, *tovu::draw_list[i].particle, 1.0f));
}

void build_with_library_sine(tovu::SmokeInstance& block) {
    const float* m = block.billboard_matrix.m;
    const Vector3 scale = block.abs_scale;
    const Vector3 x_axis{m[0], m[1], m[2]};
    const Vector3 y_axis{m[4], m[5], m[6]};
    for (int32_t i = 0; i < block.draw_count; ++i) {
        const Particle& p = *tovu::draw_list[i].particle;
        const float radians = (p.rotation + p.path_angle) * 0.017453292f;
        const float cosine = std::cos(radians);
        const float sine = std::sin(radians);
        const Vector3 right = (x_axis * cosine + y_axis * sine) * (p.size_x * scale.x);
        const Vector3 up = (y_axis * cosine - x_axis * sine) * (p.size_y * scale.y);
        const Vector3 at = tovu::transform(block.transformation_copy, p.position);
        const uint32_t color = tovu::color_index(p.age, p.life);
        const uint8_t* rgb = block.color_table.rgb[color];
        const auto alpha = static_cast<int32_t>(block.alpha_table.alpha[tovu::alpha_index(color)] * 255.0f);
        write_quad(i, {{at + up - right, at - up - right, at - up + right, at + up + right},
                       {rgb[0], rgb[1], rgb[2], static_cast<uint8_t>(alpha)}});
    }
}

}  // namespace bench
