#include "gather.h"

#include <tovu/exchange.h>
#include <tovu/host_services.h>
#include <tovu/parameter_slots.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "outline.h"

namespace gather {
namespace {

// The container that the slot names, or -1.
int32_t container_named(uint32_t slot) {
    const char* name = tovu_slot_text(slot);
    return *name ? _api__get_objectid(name, "", TOVU_OBJECT_CONTAINER) : -1;
}

// The geometry that the container carries, or -1.
int32_t geometry_of(int32_t container_handle) {
    int32_t geometry_handle = -1;  // unchanged if there is no container
    _api__container_get_geometry(container_handle, &geometry_handle);
    return _api__object_valid(geometry_handle) ? geometry_handle : -1;
}

// Seconds since the last call: by the post-recording clock while a clip is recorded, else one period when the retrace
// counter has changed. 0 in a repeated call for the same frame, and in the first frame of a recording.
float elapsed_seconds(Gather& gather) {
    uint8_t recording = 0;
    _api__pellor_get_is_post_recording(&recording);
    if (recording != 0) {
        const float before = gather.last_post_seconds;
        gather.last_post_seconds = 0;
        _api__pellor_get_post_current_time(&gather.last_post_seconds);
        return before < 0 ? 0 : gather.last_post_seconds - before;
    }
    int32_t retrace = 0;
    double period = 0;
    _api__pellor_get_retrace_counter(&retrace);
    _api__pellor_get_refreshrate(&period);
    if (retrace == gather.last_retrace) return 0;
    gather.last_retrace = retrace;
    return static_cast<float>(period);
}

// Attaches or refreshes the attachment. Detaches from another smoke first. Null if the geometry is not a smoke.
ParticleExchangeBlock* attach(Gather& gather, int32_t geometry_handle) {
    if (geometry_handle != gather.smoke_geometry_handle) detach(gather);
    if (geometry_handle == -1) return nullptr;
    ParticleAttachRequest request{.birth_limit = 25000, .death_acceleration = 100, .owns_colour = 1};
    ParticleExchangeBlock* block = nullptr;  // unchanged if the plug-in is not a smoke
    _api__geom_dispatcher(geometry_handle, TOVU_REQUEST_ATTACH, &request, &block);
    gather.smoke_geometry_handle = block != nullptr ? geometry_handle : -1;
    return block;
}

// Values that are the same for all particles of a frame.
struct Frame {
    Slots values;
    Outline outline;
    float dt;             // seconds since the last frame
    float since_start;    // seconds since gathering began, negative before
    float since_release;  // seconds since the release of the first particles, negative before
};

// The strength, 0 to 1, with which a particle with its place at `across` is pulled; nothing if it must be released. The
// sweep delays places with a high x. After the gather time all particles are pulled fully.
std::optional<float> pull_at(const Frame& frame, float across) {
    const Slots& values = frame.values;
    if (frame.since_start < 0 || frame.since_release >= values.release_time * across) return std::nullopt;
    const float begin = values.gather_time * across * values.sweep / 100;
    if (frame.since_start >= values.gather_time) return 1.0f;
    if (frame.since_start <= begin) return 0.0f;
    const float x = (frame.since_start - begin) / (values.gather_time - begin);
    return x * x * (3 - 2 * x);  // smoothstep
}

// Numbers from -1 to 1 that are constant for a particle, so that its place does not jump between frames. Multiples of
// irrational numbers are evenly distributed (Weyl).
Vector3 noise(int32_t number) {
    const auto axis = [number](double step) { return static_cast<float>(std::remainder(number * step, 2.0)); };
    return {axis(1.4142135623730951), axis(1.7320508075688772), axis(2.23606797749979)};
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

// Pulls a claimed particle toward a point like a damped spring, keeps it young and colours it. pull: 0 to 1. Damping is
// implicit and the stiffness is limited, so the spring is stable at any strength.
void hold(Particle& p, const Vector3& point, float pull, const Frame& frame) {
    const Slots& values = frame.values;
    const float stiffness = std::min(values.strength * pull * frame.dt, 1.0f);
    const float damping = values.damping / 100;
    const auto spring = [stiffness, damping](float& velocity, float distance) {
        velocity = (velocity + stiffness * stiffness * distance) / (1 + 2 * damping * stiffness);
    };
    const Vector3 off = noise(p.claimed);
    spring(p.velocity.x, point.x + off.x * values.scatter - p.position.x);
    spring(p.velocity.y, point.y + off.y * values.scatter - p.position.y);
    spring(p.velocity.z, point.z + off.z * values.scatter - p.position.z);
    keep_young(p, p.life * values.hold_phase / 100, frame.dt);
    set_colour(p, values, pull);
}

// Releases a claimed particle and pushes it away. It keeps its colour.
void release(Particle& p, const Frame& frame) {
    const Slots& values = frame.values;
    const float spread = std::hypot(values.blow_x, values.blow_y) * values.blow_spread / 100;
    const Vector3 off = noise(p.claimed);
    p.velocity.x += (values.blow_x + off.x * spread) * frame.dt;
    p.velocity.y += (values.blow_y + off.y * spread) * frame.dt;
    p.velocity.z += off.z * spread * frame.dt;
    p.claimed = 0;
    p.released = 1;
}

// Makes every particle either claimed or released, since otherwise it stands still and is not drawn.
void tend(Particle& p, int32_t& last_number, const Frame& frame) {
    const bool gathers = frame.since_start >= 0 && frame.since_release < 0 && !frame.outline.edges.empty();
    if (p.claimed == 0 && gathers) {
        p.claimed = last_number = last_number % std::numeric_limits<int32_t>::max() + 1;
        p.released = 0;
    }
    if (p.claimed != 0) {
        const std::optional<Place> place = place_of(frame.outline, p.claimed);
        const std::optional<float> pull = place ? pull_at(frame, place->across) : std::nullopt;
        pull ? hold(p, place->point, *pull, frame) : release(p, frame);
    } else if (p.released == 0) {  // newborn, or older than the attachment
        p.released = 1;
        set_colour(p, frame.values, 0);
    }
}

}  // namespace

void run_frame(Gather& gather) {
    Frame frame{};
    frame.dt = elapsed_seconds(gather);
    if (!(frame.dt > 0)) return;
    frame.values = clamped(gather.slots);
    const Slots& values = frame.values;
    frame.since_start = static_cast<float>(gather.seconds) - values.start_delay;
    frame.since_release = frame.since_start - values.gather_time - values.hold_time;
    gather.seconds += static_cast<double>(frame.dt);
    const int32_t smoke_handle = container_named(values.smoke_container);
    const ParticleExchangeBlock* block = attach(gather, geometry_of(smoke_handle));
    if (block == nullptr) return;
    const int32_t target_handle = container_named(values.target_container);
    frame.outline = read_outline(target_handle, geometry_of(target_handle),
                                 values.smoke_reference == kReferenceWorld ? -1 : smoke_handle);
    // The smoke frees records on the deleted list only if they are not claimed.
    for (Particle* p = block->deleted_head; p != nullptr; p = p->next) p->claimed = 0;
    for (Particle* p = *block->active_head; p != nullptr; p = p->next) tend(*p, gather.last_number, frame);
}

void detach(Gather& gather) {
    ParticleExchangeBlock* block = nullptr;
    if (_api__object_valid(gather.smoke_geometry_handle))
        _api__geom_dispatcher(gather.smoke_geometry_handle, TOVU_REQUEST_DETACH, nullptr, &block);
    gather.smoke_geometry_handle = -1;
}

}  // namespace gather
