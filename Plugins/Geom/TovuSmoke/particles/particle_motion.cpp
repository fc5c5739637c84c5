#include "particle_motion.h"

#include <cstddef>
#include <cstring>

#include "../math/float4.h"
#include "../math/random.h"
#include "../math/trigonometry.h"
#include "active_array.h"
#include "curves.h"
#include "fetch_ahead.h"
#include "pool.h"
#include "step_values.h"

namespace tovu {
namespace {

constexpr int32_t kRecordsPerBlock = 32;  // two blocks, this and the next, fit the first-level cache with room to spare

/// Some particles in list order, on their way through the steps of a frame together: what memory and random numbers
/// take is out of the way of the arithmetic then.
struct Block {
    int32_t count = 0;
    Particle* records[kRecordsPerBlock];
    alignas(16) float age[kRecordsPerBlock];
    alignas(16) float life[kRecordsPerBlock];
    alignas(16) uint32_t color_index[kRecordsPerBlock];
    alignas(16) float turbulence[3][kRecordsPerBlock];  // displacement along x, y, z
    uint64_t pixels[kRecordsPerBlock];                  // of an image's wind: where they begin in its data
    Float4 wind_step[kRecordsPerBlock];                 // of an image; x, y, z
};

/// Asks for the records of an array, from its end to its beginning.
struct Fetch {
    Particle* const* at;  // behind the one that is next
    Particle* const* first;
    void next() {
        if (at != first) fetch_ahead(*--at);
    }
};

void cut_life_keeping_phase(Particle& p, float factor) {
    p.life *= factor;
    p.age *= factor;
    p.accelerated = 1;
}

// Once per particle, and only while Death Acceleration is below 100. Outside its spawn shape a particle keeps the phase
// of its life, so that colour and opacity go on smoothly; off the mask of an image it keeps its age and jumps ahead.
void accelerate_death(Particle& p, const StepValues& values) {
    if (values.spawn_type == kSpawnImage) {
        if (sample1(values.mask, p.position.x, p.position.y) != 0.0f) return;
        p.life = (p.life - p.age) * values.life_factor + p.age;
        p.accelerated = 1;
        return;
    }
    const bool outside = values.spawn_type == kSpawnContainer && !contains(values.inside, p.position);
    if (outside || (values.consumer && p.released)) cut_life_keeping_phase(p, values.life_factor);
}

/// Ages a particle that takes part in the step. Returns whether it lives on.
inline bool grows_older(Particle& p, float time_step) {
    p.age += time_step;
    return !(p.age > p.life);
}

inline bool takes_part(const Particle& p, const StepValues& values) {
    return !values.consumer || p.claimed || p.released;
}

// The draws of each particle follow those of the one before; only then are they turned into lengths.
void draw_turbulence(Block& block, const StepValues& values) {
    int32_t drawn[3][kRecordsPerBlock];
    for (int32_t i = 0; i < block.count; ++i) {
        if (values.turbulent_x) drawn[0][i] = random_15_bits();
        if (values.turbulent_y) drawn[1][i] = random_15_bits();
        if (values.turbulent_z) drawn[2][i] = random_15_bits();
    }
    const auto lengths = [&block](float* length, const int32_t* r, bool turbulent, float range, float half) {
        for (int32_t i = 0; i < block.count; ++i)
            length[i] = turbulent ? random_share(r[i], range) - half : kNegativeZero;
    };
    lengths(block.turbulence[0], drawn[0], values.turbulent_x, values.turbulence.x, values.half_turbulence.x);
    lengths(block.turbulence[1], drawn[1], values.turbulent_y, values.turbulence.y, values.half_turbulence.y);
    lengths(block.turbulence[2], drawn[2], values.turbulent_z, values.turbulence.z, values.half_turbulence.z);
}

// Fields that are read and written together with their neighbours.
constexpr size_t kVelocity = offsetof(Particle, velocity);
constexpr size_t kColor = offsetof(Particle, color);
constexpr size_t kSizes = offsetof(Particle, size_x);
static_assert(offsetof(Particle, position) == 0 && kVelocity == 12 && kColor == 24 && kSizes == 32);
static_assert(offsetof(Particle, alpha) == kColor + 4 && offsetof(Particle, size_y) == kSizes + 8);

constexpr Int4 kFirstThree{-1, -1, -1, 0};

/// What moves all particles alike, along x, y, z. What does not act is kNegativeZero, or a factor of 1.
struct Motion {
    Float4 wind_step;
    Float4 velocity_step;
    Float4 drag;
};

Motion motion_of(const StepValues& values) {
    const Vector3 wind = values.wind_active ? values.wind_step : Vector3{kNegativeZero, kNegativeZero, kNegativeZero};
    const float gravity = values.gravity_active ? values.gravity_step : kNegativeZero;
    return {Float4{wind.x, wind.y, wind.z, kNegativeZero}, Float4{kNegativeZero, gravity, kNegativeZero, kNegativeZero},
            broadcast(values.drag)};
}

/// Bounds as they are widened: the fourth of each means nothing.
struct Box {
    Float4 low;
    Float4 high;
};

inline void widen(Box& box, Float4 at) {
    box.low = at < box.low ? at : box.low;
    box.high = at > box.high ? at : box.high;
}

/// Position with the first of the velocity, and velocity alone.
inline Float4 position_of(const Particle& p) {
    return load_float4(&p);
}
inline Float4 velocity_of(const Particle& p) {
    return masked(load_float4(reinterpret_cast<const char*>(&p) + kVelocity), kFirstThree);
}

/// The colour with the byte that follows it.
inline uint32_t color_of(const Particle& p) {
    uint32_t color;
    std::memcpy(&color, reinterpret_cast<const char*>(&p) + kColor, sizeof color);
    return color;
}
inline void put_color(Particle& p, uint32_t color) {
    std::memcpy(reinterpret_cast<char*>(&p) + kColor, &color, sizeof color);
}

inline void put_alpha(Particle& p, const SmokeInstance& instance, uint32_t color_index) {
    p.alpha = instance.alpha_table.alpha[alpha_index(color_index)] * 255.0f;
}

/// Puts a particle to `at`, brings on its velocity, turn and sizes. Its colour has to be put anew afterwards, since the
/// velocity is stored over it.
inline void settle(Particle& p, Float4 at, const Motion& motion) {
    char* const record = reinterpret_cast<char*>(&p);
    const Float4 velocity = (velocity_of(p) + motion.velocity_step) * motion.drag;
    store(record, at);  // its fourth is overwritten next
    store(record + kVelocity, velocity);
    const Float4 sizes = load_float4(record + kSizes);  // size and step of x, size and step of y
    store(record + kSizes, sizes + odd_lanes_to_even(sizes));
    p.rotation += p.rotation_step;
    p.path_angle = 0.0f;
}

template <bool turbulent>
inline Float4 displaced(const Block& block, int32_t i) {
    const Particle& p = *block.records[i];
    const Float4 at = position_of(p) + velocity_of(p);
    if constexpr (!turbulent) return at;
    return at + Float4{block.turbulence[0][i], block.turbulence[1][i], block.turbulence[2][i], kNegativeZero};
}

/// Finds the pixels of an image's wind at the positions of a block.
template <bool turbulent>
void find_wind_pixels(Block& block, const ImageReader& image) {
    const int32_t count = block.count;
    float xy[2 * kRecordsPerBlock + 2];
    for (int32_t i = 0; i < count; ++i) {
        const Float4 at = displaced<turbulent>(block, i);
        std::memcpy(xy + 2 * i, &at, 2 * sizeof(float));
    }
    xy[2 * count] = xy[2 * count + 1] = 0.0f;  // where the count is odd, positions are looked up in twos
    find_pixels(image, xy, count, block.pixels);
}

/// Moves, turns, grows and colours the particles of a block, and asks for the records of the next one meanwhile.
template <bool turbulent, bool wind_from_image, bool looks>
void move_block(Block& block, const StepValues& values, const SmokeInstance& instance, Box& box, Fetch& fetch) {
    const Motion motion = motion_of(values);
    const WindImage wind = values.wind_image;
    const Float4 time_step = broadcast(values.time_step);
    const bool store_color = values.store_color;
    Box widened = box;  // both stay in registers
    Fetch ahead = fetch;
    for (int32_t i = 0, count = block.count; i < count; ++i) {
        ahead.next();
        Particle& p = *block.records[i];
        Float4 at = displaced<turbulent>(block, i);
        if constexpr (wind_from_image) {
            block.wind_step[i] = wind_field(wind, block.pixels[i]) * time_step;
            at += block.wind_step[i];
        } else {
            at += motion.wind_step;
        }
        widen(widened, at);
        uint32_t color = color_of(p);
        settle(p, at, motion);
        if constexpr (looks) {
            const uint32_t index = block.color_index[i];
            if (store_color) color = color_entry(instance, index);
            put_alpha(p, instance, index);
        }
        put_color(p, color);
    }
    box = widened;
    fetch = ahead;
}

// The angle between +y and a direction of length 1 in the x-y plane, radians, clockwise positive.
float direction_angle(Vector3 d) {
    constexpr float kTiny = 1.1920928955078125e-07f;
    constexpr float kHalfTurn = 3.1415927f;
    const float across = d.x < -1.0f ? -1.0f : d.x > 1.0f ? 1.0f : d.x;
    if (-kTiny < across && across < kTiny) return d.y < 0.0f ? kHalfTurn : 0.0f;
    const float angle = arc_sine(across);
    return d.y < 0.0f ? kHalfTurn - angle : angle;
}

float path_angle(Vector3 d, const StepValues& values, const SmokeInstance& instance) {
    if (values.path_in_world) d = transform(instance.rotation_scale_matrix, d);
    d.z = 0.0f;
    normalize(d);
    return static_cast<float>(-static_cast<double>(direction_angle(d)) * 180.0 / 3.141592653589793);
}

void follow_paths(const Block& block, const StepValues& values, const SmokeInstance& instance) {
    for (int32_t i = 0; i < block.count; ++i) {
        Particle& p = *block.records[i];
        const Float4 wind = block.wind_step[i];
        const Vector3 wind_step = values.wind_from_image ? Vector3{wind[0], wind[1], wind[2]} : values.wind_step;
        p.path_angle = path_angle(p.velocity + wind_step, values, instance);
    }
}

template <bool turbulent, bool wind_from_image>
void step_block(Block& block, const StepValues& values, const SmokeInstance& instance, Box& box, Fetch& fetch) {
    if (turbulent) draw_turbulence(block, values);
    if (wind_from_image) find_wind_pixels<turbulent>(block, values.wind_image.reader);
    if (values.store_alpha) {
        for (int32_t i = 0; i < block.count; i += 4)
            store(block.color_index + i,
                  color_indices(color_phases(load_float4(block.age + i), load_float4(block.life + i))));
        move_block<turbulent, wind_from_image, true>(block, values, instance, box, fetch);
    } else {
        move_block<turbulent, wind_from_image, false>(block, values, instance, box, fetch);
    }
    if (values.follow_path) follow_paths(block, values, instance);
}

bool is_turbulent(const StepValues& values) {
    return values.turbulent_x || values.turbulent_y || values.turbulent_z;
}

/// What is left of the step once the particles of a block are known to be alive.
void step_block(Block& block, const StepValues& values, const SmokeInstance& instance, Box& box, Fetch& fetch) {
    if (is_turbulent(values) && values.wind_from_image)
        step_block<true, true>(block, values, instance, box, fetch);
    else if (is_turbulent(values))
        step_block<true, false>(block, values, instance, box, fetch);
    else if (values.wind_from_image)
        step_block<false, true>(block, values, instance, box, fetch);
    else
        step_block<false, false>(block, values, instance, box, fetch);
}

// Asking a spawn plug-in lets others in: they may draw random numbers, between those of the particle before and its
// own, load images anew, attach a consumer, or empty the list of the live.
bool asks_plugin(const StepValues& values) {
    return values.inside.way == InsideTest::kAskPlugin;
}

int32_t block_size(const StepValues& values) {
    return asks_plugin(values) ? 1 : kRecordsPerBlock;
}

/// Where nothing is drawn or asked for a particle and no consumer looks on, each goes all its way at once. Its colour
/// follows while the next one is on its way, since nothing should wait for the division that leads to it.
template <bool looks>
void walk_straight(SmokeInstance& instance, ActiveArray& active, const StepValues& values, Box& box) {
    const Motion motion = motion_of(values);
    const float time_step = values.time_step;
    Box widened = box;
    Particle nobody;
    Particle* before = &nobody;
    Float4 phase_before{};
    const auto give_look = [&instance](Particle& p, Float4 phase) {
        const auto index = static_cast<uint32_t>(color_indices(phase)[0]);
        put_color(p, color_entry(instance, index));
        put_alpha(p, instance, index);
    };
    Particle** const first = active.records.data() + active.begin;
    Particle** survivors = active.records.data() + active.end;
    Fetch fetch{survivors, first};
    for (int32_t i = 0; i < kFetchAhead; ++i) fetch.next();
    for (Particle** place = survivors; place != first;) {
        fetch.next();
        Particle& p = **--place;
        if (!grows_older(p, time_step)) {
            move_to_inactive(instance, p);
            continue;
        }
        *--survivors = &p;
        const Float4 phase = color_phases(broadcast(p.age), broadcast(p.life));
        const Float4 at = position_of(p) + velocity_of(p) + motion.wind_step;
        widen(widened, at);
        const uint32_t color = color_of(p);
        settle(p, at, motion);
        if constexpr (looks) {
            give_look(*before, phase_before);
            before = &p;
            phase_before = phase;
        } else {
            put_color(p, color);
        }
    }
    if (looks) give_look(*before, phase_before);
    box = widened;
    active.begin = static_cast<int32_t>(survivors - active.records.data());
}

bool goes_straight(const StepValues& values) {
    return !is_turbulent(values) && !values.wind_from_image && !values.follow_path && !values.accelerate &&
           !values.consumer;
}

/// Ages the particles of records[begin … end) from the end, and fills the block with those that go on. Who lives is
/// kept in front of `survivors`, which moves along.
/// Returns false when a request emptied the list of the live: the walk is over.
template <bool plain>
bool gather_block(SmokeInstance& instance, StepValues& values, Particle** begin, Particle** end, Particle**& survivors,
                  Block& block) {
    const float time_step = values.time_step;
    Particle** kept = survivors;
    int32_t count = 0;
    while (end != begin) {
        Particle* p = *--end;
        if (plain || takes_part(*p, values)) {
            if (!grows_older(*p, time_step)) {
                move_to_inactive(instance, *p);
                continue;
            }
            if (!plain && values.accelerate && !p->accelerated) {
                accelerate_death(*p, values);
                if (asks_plugin(values)) {
                    if (instance.active_head == nullptr) return false;
                    update_after_request(values, instance);
                }
            }
            block.age[count] = p->age;
            block.life[count] = p->life;
            block.records[count++] = p;
        }
        *--kept = p;
    }
    block.count = count;
    for (; count % 4 != 0; ++count) block.age[count] = block.life[count] = 0.0f;  // fours are worked on as one
    survivors = kept;
    return true;
}

void walk_links(SmokeInstance& instance, StepValues& values, Box& box) {
    const int32_t most = block_size(values);
    Particle* listed[kRecordsPerBlock];
    Particle** const end = listed + most;
    Block block;
    Fetch nothing{nullptr, nullptr};
    for (Particle* p = instance.active_head; p != nullptr;) {
        Particle** begin = end;  // filled before anybody dies, who would be linked elsewhere
        for (; p != nullptr && begin != listed; p = p->next) *--begin = p;
        Particle** survivors = end;
        if (!gather_block<false>(instance, values, begin, end, survivors, block)) return;
        step_block(block, values, instance, box, nothing);
    }
}

// The same walk through the side array, which is closed up toward its end as particles die: until that is done, whoever
// comes in through a request has to go by the links.
void walk_array(SmokeInstance& instance, ActiveArray& active, StepValues& values, Box& box) {
    const int32_t most = block_size(values);
    const bool plain = !values.consumer && !values.accelerate;
    Particle** const first = active.records.data() + active.begin;
    Particle** at = active.records.data() + active.end;
    Particle** survivors = at;
    Fetch fetch{at, first};
    for (int32_t i = 0; i < most; ++i) fetch.next();
    Block block;
    active.follows_links = false;
    while (at != first) {
        Particle** const begin = at - first > most ? at - most : first;
        if (plain)
            gather_block<true>(instance, values, begin, at, survivors, block);
        else if (!gather_block<false>(instance, values, begin, at, survivors, block))
            return;  // the array was emptied with the list
        for (int32_t died = static_cast<int32_t>(at - begin) - block.count; died > 0; --died) fetch.next();
        step_block(block, values, instance, box, fetch);
        at = begin;
    }
    active.begin = static_cast<int32_t>(survivors - active.records.data());
    active.follows_links = true;
}

}  // namespace

Bounds move_particles(SmokeInstance& instance) {
    StepValues values;
    WindAngles spare_angles;
    set_step_values(values, instance, spare_angles);
    const Bounds empty;
    Box box{broadcast(empty.low.x), broadcast(empty.high.x)};
    ActiveArray* active = current_active_array(instance);
    if (active == nullptr)
        walk_links(instance, values, box);
    else if (!goes_straight(values))
        walk_array(instance, *active, values, box);
    else if (values.store_alpha)
        walk_straight<true>(instance, *active, values, box);
    else
        walk_straight<false>(instance, *active, values, box);
    return {{box.low[0], box.low[1], box.low[2]}, {box.high[0], box.high[1], box.high[2]}};
}

}  // namespace tovu
