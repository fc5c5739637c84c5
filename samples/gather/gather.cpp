#include "gather.h"

#include <tovu/exchange.h>
#include <tovu/host_services.h>
#include <tovu/parameter_slots.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace gather {
namespace {

// The container with this name; an empty name means none.
int32_t container_named(const char* name) {
    const int32_t container_handle = *name ? _api__get_objectid(name, "", TOVU_OBJECT_CONTAINER) : -1;
    return _api__object_valid(container_handle) ? container_handle : -1;
}

// The geometry that the container carries, or -1.
int32_t geometry_of(int32_t container_handle) {
    int32_t geometry_handle = -1;  // the host leaves it so when it does not know the container
    if (container_handle != -1) _api__container_get_geometry(container_handle, &geometry_handle);
    return _api__object_valid(geometry_handle) ? geometry_handle : -1;
}

// Seconds since the last call: by the post-recording clock while a clip is recorded, else one period when the retrace
// counter has changed. 0 in a repeated call for the same frame, and in the first frame of a recording.
float elapsed_seconds(Clock& clock) {
    uint8_t recording = 0;
    _api__pellor_get_is_post_recording(&recording);
    if (recording != 0) {
        const float before = clock.last_post_seconds;
        clock.last_post_seconds = 0;
        _api__pellor_get_post_current_time(&clock.last_post_seconds);
        return before < 0 ? 0 : clock.last_post_seconds - before;
    }
    int32_t retrace = 0;
    double period = 0;
    _api__pellor_get_retrace_counter(&retrace);
    _api__pellor_get_refreshrate(&period);
    if (retrace == clock.last_retrace) return 0;
    clock.last_retrace = retrace;
    return static_cast<float>(period);
}

// Attaches, or refreshes the attachment; detaches first from another smoke. Null when the geometry is no smoke.
ParticleExchangeBlock* attach(Gather& gather, int32_t geometry_handle) {
    if (geometry_handle != gather.smoke_geometry_handle) detach(gather);
    if (geometry_handle == -1) return nullptr;
    ParticleAttachRequest request{.birth_limit = 25000, .death_acceleration = 100, .owns_colour = 1};
    ParticleExchangeBlock* block = nullptr;  // another plug-in ignores the request and leaves the reply as it was
    _api__geom_dispatcher(geometry_handle, TOVU_REQUEST_ATTACH, &request, &block);
    gather.smoke_geometry_handle = block != nullptr ? geometry_handle : -1;
    return block;
}

bool is_gathering(const Slots& values, float seconds) {
    const float since_start = seconds - values.start_delay;
    return since_start >= 0 && since_start < values.gather_time + values.hold_time;
}

// How strongly a particle with its place at `across` is pulled: 0 to 1 while it is held, nothing when it is to be let
// go. The sweep delays places with a high x; all are pulled fully once the gather time is over.
std::optional<float> pull_at(const Slots& values, float seconds, float across) {
    const float since_start = seconds - values.start_delay;
    const float since_release = since_start - values.gather_time - values.hold_time;
    if (since_start < 0 || since_release >= values.release_time * across) return std::nullopt;
    const float begin = values.gather_time * across * values.sweep / 100;
    if (since_start >= values.gather_time) return 1.0f;
    if (since_start <= begin) return 0.0f;
    const float x = (since_start - begin) / (values.gather_time - begin);
    return x * x * (3 - 2 * x);  // smoothstep
}

// Each number -1 to 1, and always the same for the same particle: a place must not jump from frame to frame.
// Multiples of irrational numbers spread evenly (Weyl).
Vector3 noise(int32_t number) {
    const auto axis = [number](double step) { return static_cast<float>(std::remainder(number * step, 2.0)); };
    return {axis(1.4142135623730951), axis(1.7320508075688772), axis(2.23606797749979)};
}

// The new velocity per frame on one axis. Damping is implicit and stiffness is limited, so the spring is stable at any
// strength.
float sprung(float velocity, float distance, float strength, float damping, float dt) {
    const float w = std::min(strength * dt, 1.0f);
    return (velocity + w * w * distance) / (1 + 2 * damping * w);
}

// The smoke ages every particle by dt in each frame. A particle older than `wanted_age` is taken back by up to
// 3 dt, so that it gets younger at twice the rate at which it aged; its size goes back with its age.
void keep_young(Particle& p, float wanted_age, float dt) {
    const float excess = p.age - wanted_age;
    if (!(excess > 0)) return;
    const float back = std::min(excess, 3 * dt);
    p.age -= back;
    p.size_x = std::max(p.size_x - p.size_step_x * back / dt, 0.0f);
    p.size_y = std::max(p.size_y - p.size_step_y * back / dt, 0.0f);
}

// Mixes the colour of free smoke (held 0) with that of held smoke (held 1).
void set_colour(Particle& p, const Slots& values, float held) {
    const auto mixed = [held](int32_t free, int32_t full) {
        return static_cast<uint8_t>(static_cast<float>(free) + static_cast<float>(full - free) * held);
    };
    p.color[0] = mixed(values.free_red, values.held_red);
    p.color[1] = mixed(values.free_green, values.held_green);
    p.color[2] = mixed(values.free_blue, values.held_blue);
}

// Pulls a claimed particle toward a point like a damped spring, keeps it young and colours it. pull: 0 to 1.
void hold(Particle& p, const Vector3& point, float pull, const Slots& values, float dt) {
    const float strength = values.strength * pull;
    const float damping = values.damping / 100;
    const Vector3 off = noise(p.claimed);
    const Vector3 goal{point.x + off.x * values.scatter, point.y + off.y * values.scatter,
                       point.z + off.z * values.scatter};
    p.velocity.x = sprung(p.velocity.x, goal.x - p.position.x, strength, damping, dt);
    p.velocity.y = sprung(p.velocity.y, goal.y - p.position.y, strength, damping, dt);
    p.velocity.z = sprung(p.velocity.z, goal.z - p.position.z, strength, damping, dt);
    keep_young(p, p.life * values.hold_phase / 100, dt);
    set_colour(p, values, pull);
}

// Lets a claimed particle go and pushes it away. It keeps its colour.
void release(Particle& p, const Slots& values, float dt) {
    const float spread = std::hypot(values.blow_x, values.blow_y) * values.blow_spread / 100;
    const Vector3 off = noise(p.claimed);
    p.velocity.x += (values.blow_x + off.x * spread) * dt;
    p.velocity.y += (values.blow_y + off.y * spread) * dt;
    p.velocity.z += off.z * spread * dt;
    p.claimed = 0;
    p.released = 1;
}

// Leaves every particle either claimed or released: with neither set it would stand still and not be drawn.
void tend(Gather& gather, Particle& particle, const Slots& values, float seconds, float dt) {
    if (particle.claimed == 0 && gather.outline.length > 0 && is_gathering(values, seconds)) {
        gather.last_number = gather.last_number % std::numeric_limits<int32_t>::max() + 1;
        particle.claimed = gather.last_number;
        particle.released = 0;
    }
    if (particle.claimed != 0) {
        const std::optional<Place> place = place_of(gather.outline, particle.claimed);
        const std::optional<float> pull = place ? pull_at(values, seconds, place->across) : std::nullopt;
        if (pull)
            hold(particle, place->point, *pull, values, dt);
        else
            release(particle, values, dt);
    } else if (particle.released == 0) {  // newborn, or older than the attachment
        particle.released = 1;
        set_colour(particle, values, 0);
    }
}

}  // namespace

void run_frame(Gather& gather) {
    const float dt = elapsed_seconds(gather.clock);
    if (!(dt > 0)) return;
    const float seconds = static_cast<float>(gather.clock.seconds);
    gather.clock.seconds += static_cast<double>(dt);
    const Slots values = clamped(gather.slots);
    const int32_t smoke_handle = container_named(tovu_slot_text(values.smoke_container));
    const ParticleExchangeBlock* block = attach(gather, geometry_of(smoke_handle));
    if (block == nullptr) return;
    const int32_t target_handle = container_named(tovu_slot_text(values.target_container));
    read_outline(gather.outline, target_handle, geometry_of(target_handle),
                 values.smoke_reference == kReferenceWorld ? -1 : smoke_handle);
    // The smoke frees records that left the pool only when nobody claims them.
    for (Particle* p = block->deleted_head; p != nullptr; p = p->next) p->claimed = 0;
    for (Particle* p = *block->active_head; p != nullptr; p = p->next) tend(gather, *p, values, seconds, dt);
}

void detach(Gather& gather) {
    ParticleExchangeBlock* block = nullptr;
    if (_api__object_valid(gather.smoke_geometry_handle))
        _api__geom_dispatcher(gather.smoke_geometry_handle, TOVU_REQUEST_DETACH, nullptr, &block);
    gather.smoke_geometry_handle = -1;
}

}  // namespace gather
