#include "particle_batch.h"

#include "../math/random.h"
#include "particle_rules.h"

namespace tovu {
namespace {

// All random numbers of a particle are drawn before those of the next one. They become displacements afterwards, in
// loops that the compiler vectorises.
void draw_turbulence(Batch& batch, const StepValues& values) {
    int32_t drawn[3][kBatchSize];
    for (int32_t i = 0; i < batch.count; ++i) {
        if (values.turbulent_x) drawn[0][i] = random_15_bits();
        if (values.turbulent_y) drawn[1][i] = random_15_bits();
        if (values.turbulent_z) drawn[2][i] = random_15_bits();
    }
    const auto fill = [&batch](float* displacement, const int32_t* r, bool turbulent, float range, float half) {
        for (int32_t i = 0; i < batch.count; ++i)
            displacement[i] = turbulent ? random_share(r[i], range) - half : kNegativeZero;
    };
    fill(batch.turbulence[0], drawn[0], values.turbulent_x, values.turbulence.x, values.half_turbulence.x);
    fill(batch.turbulence[1], drawn[1], values.turbulent_y, values.turbulence.y, values.half_turbulence.y);
    fill(batch.turbulence[2], drawn[2], values.turbulent_z, values.turbulence.z, values.half_turbulence.z);
}

void fill_color_indices(Batch& batch) {
    for (int32_t i = 0; i < batch.count; i += 4)
        store(batch.color_index + i, color_indices(load_float4(batch.age + i), load_float4(batch.life + i)));
}

/// The position after velocity and turbulence, before wind.
inline Float4 displaced_position(const Batch& batch, int32_t i, bool turbulent) {
    const Particle& p = *batch.records[i];
    const Float4 position = load_position(p) + load_velocity(p);
    if (!turbulent) return position;
    return position + Float4{batch.turbulence[0][i], batch.turbulence[1][i], batch.turbulence[2][i], kNegativeZero};
}

void find_wind_pixels(Batch& batch, const ImageReader& image, bool turbulent) {
    const int32_t count = batch.count;
    float xy[2 * kBatchSize + 2];
    for (int32_t i = 0; i < count; ++i) {
        const Float4 position = displaced_position(batch, i, turbulent);
        std::memcpy(xy + 2 * i, &position, 2 * sizeof(float));
    }
    xy[2 * count] = xy[2 * count + 1] = 0.0f;  // find_pixels reads an even number of positions
    find_pixels(image, xy, count, batch.pixels);
}

// A loop for each case: tests inside one loop would make steps of batches 4 to 10 % slower.
template <bool turbulent, bool wind_from_image, bool store_alpha>
void move_particles(Batch& batch, const StepValues& values, const SmokeInstance& instance, LaneBounds& bounds,
                    RecordPrefetcher& prefetcher) {
    const Forces forces = forces_of(values);
    const WindImage wind = values.wind_image;
    const Float4 time_step = broadcast(values.time_step);
    const bool store_color = values.store_color;
    LaneBounds widened = bounds;  // copies, which the compiler keeps in registers
    RecordPrefetcher ahead = prefetcher;
    for (int32_t i = 0, count = batch.count; i < count; ++i) {
        ahead.next();
        Particle& p = *batch.records[i];
        Float4 position = displaced_position(batch, i, turbulent);
        if constexpr (wind_from_image) {
            batch.wind_step[i] = wind_field(wind, batch.pixels[i]) * time_step;
            position += batch.wind_step[i];
        } else {
            position += forces.wind_step;
        }
        widen(widened, position);
        uint32_t color = load_color(p);
        if constexpr (store_alpha) {
            const uint32_t index = batch.color_index[i];
            if (store_color) color = color_entry(instance, index);
            write_alpha(p, instance, index);
        }
        advance(p, position, color, forces);
    }
    bounds = widened;
    prefetcher = ahead;
}

template <bool turbulent, bool wind_from_image>
void move_particles(Batch& batch, const StepValues& values, const SmokeInstance& instance, LaneBounds& bounds,
                    RecordPrefetcher& prefetcher) {
    if (values.store_alpha)
        move_particles<turbulent, wind_from_image, true>(batch, values, instance, bounds, prefetcher);
    else
        move_particles<turbulent, wind_from_image, false>(batch, values, instance, bounds, prefetcher);
}

template <bool turbulent>
void move_particles(Batch& batch, const StepValues& values, const SmokeInstance& instance, LaneBounds& bounds,
                    RecordPrefetcher& prefetcher) {
    if (values.wind_from_image)
        move_particles<turbulent, true>(batch, values, instance, bounds, prefetcher);
    else
        move_particles<turbulent, false>(batch, values, instance, bounds, prefetcher);
}

void set_path_angles(const Batch& batch, const StepValues& values, const SmokeInstance& instance) {
    for (int32_t i = 0; i < batch.count; ++i) {
        Particle& p = *batch.records[i];
        const Float4 wind = batch.wind_step[i];
        const Vector3 wind_step = values.wind_from_image ? Vector3{wind[0], wind[1], wind[2]} : values.wind_step;
        p.path_angle = path_angle(p.velocity + wind_step, values, instance);
    }
}

}  // namespace

void move_batch(Batch& batch, const StepValues& values, const SmokeInstance& instance, LaneBounds& bounds,
                RecordPrefetcher& prefetcher) {
    const bool turbulent = is_turbulent(values);
    if (turbulent) draw_turbulence(batch, values);
    if (values.wind_from_image) find_wind_pixels(batch, values.wind_image.reader, turbulent);
    if (values.store_alpha) fill_color_indices(batch);
    if (turbulent)
        move_particles<true>(batch, values, instance, bounds, prefetcher);
    else
        move_particles<false>(batch, values, instance, bounds, prefetcher);
    if (values.follow_path) set_path_angles(batch, values, instance);
}

}  // namespace tovu
