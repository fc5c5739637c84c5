// The exchange protocol: a consumer attaches, claims and releases particles, and detaches.
#include <gmock/gmock.h>
#include <tovu/exchange.h>
#include <tovu/spawn_requests.h>

#include <random>

#include "particles/instance_caches.h"
#include "random_seed.h"
#include "render_host.h"

namespace tovu {
namespace {

using Records = std::vector<Particle*>;

/// A smoke of live particles at rest and a consumer that sends it requests. Frames of 0.25 s.
struct Exchange {
    explicit Exchange(int particles = 4) {
        host.stage().clock.frame_period_seconds = 0.25;
        smoke = host.smoke_of(particles);
        host.set(smoke, "birth_rate", 0.0);
        block().birth_accumulator = 0;
    }
    ParticleExchangeBlock* attach(ParticleAttachRequest request = {1000, 100, 0}) {
        ParticleExchangeBlock* reply = nullptr;
        stage::dispatch(host.stage(), smoke.container, TOVU_REQUEST_ATTACH, &request, &reply);
        return reply;
    }
    void detach() {
        ParticleExchangeBlock* reply = &block().exchange_block;
        stage::dispatch(host.stage(), smoke.container, TOVU_REQUEST_DETACH, nullptr, &reply);
        EXPECT_EQ(nullptr, reply);
    }
    void claim_all() {
        for (Particle* p : host.active(smoke)) p->claimed = 1;
    }
    SmokeInstance& block() { return host.block(smoke); }
    RenderHost host;
    SmokeHandle smoke;
};

TEST(Exchange, AttachHandsOutTheHeads) {
    RenderHost host;
    const SmokeHandle smoke = host.add_smoke({{"number_of_particles", 70}});
    SmokeInstance& instance = host.block(smoke);
    for (ParticleAttachRequest request : {ParticleAttachRequest{5, 50, 1}, ParticleAttachRequest{-1, 25, 0}}) {
        ParticleExchangeBlock* block = nullptr;  // before the first frame, and again
        stage::dispatch(host.stage(), smoke.container, 0x52414431, &request, &block);
        ASSERT_EQ(&instance.exchange_block, block);
        EXPECT_EQ(&instance.active_head, block->active_head);
        EXPECT_EQ(&instance.inactive_head, block->inactive_head);
        EXPECT_EQ(nullptr, block->deleted_head);
        EXPECT_EQ(70, block->particle_count);
        EXPECT_EQ(1, instance.consumer_attached);
        EXPECT_EQ(request.birth_limit, instance.consumer_birth_limit);
        EXPECT_EQ(request.owns_colour, instance.consumer_owns_colour);
        EXPECT_EQ(request.death_acceleration, instance.parameters.life_time_scale);
    }
    host.run_frames(5);
    EXPECT_EQ(70u, host.inactive(smoke).size());
    stage::remove_geometry(host.stage(), smoke.container);  // while attached: no request is sent
    EXPECT_TRUE(host.complaints().empty());
}

TEST(Exchange, RequestsWithoutDataOrReply) {
    Exchange x;
    ParticleExchangeBlock* block = nullptr;
    ParticleAttachRequest request{5, 50, 1};
    const auto send = [&x](int32_t code, void* data, void* reply) {
        stage::dispatch(x.host.stage(), x.smoke.container, code, data, reply);
    };
    send(TOVU_REQUEST_ATTACH, nullptr, &block);
    send(TOVU_REQUEST_ATTACH, &request, nullptr);
    send(0x52414433, &request, &block);
    EXPECT_EQ(nullptr, block);
    EXPECT_EQ(0, x.block().consumer_attached);
    EXPECT_EQ(100.0f, x.block().parameters.life_time_scale);
    x.attach();
    send(TOVU_REQUEST_DETACH, nullptr, nullptr);
    EXPECT_EQ(0, x.block().consumer_attached);
    EXPECT_EQ(0, x.host.active_count(x.smoke));
}

TEST(Exchange, BirthsAreCappedAndTheRestStaysDue) {
    const struct {
        const char* name;
        int32_t limit;
        int born;
        float due;  // seconds left over, of 0.25 at 32 births a second
    } rows[] = {{"above the births due", 9, 8, 0},
                {"below", 3, 3, 5 / 32.0f},
                {"none", 0, 0, 0.25f},
                {"negative", -2, 0, 10 / 32.0f}};
    for (const auto& row : rows) {
        Exchange x(20);
        x.attach({row.limit, 100, 0});
        x.host.press(x.smoke, "reset");
        x.host.set(x.smoke, "birth_rate", 32.0);
        x.host.run_frames(1);
        EXPECT_EQ(row.born, x.host.active_count(x.smoke)) << row.name;
        EXPECT_EQ(row.due, x.block().birth_accumulator) << row.name;
    }
}

TEST(Exchange, OnlyClaimedAndReleasedParticlesTakePart) {
    Exchange x(3);
    x.attach();
    const Records p = x.host.active(x.smoke);
    for (Particle* each : p) {
        each->velocity = {1, 0, 0};
        each->life = 0.5f;  // it would die in the first frame
        each->age = 0;
    }
    const Particle untouched = *p[1];
    p[0]->claimed = 1;
    p[2]->released = 1;
    x.host.run_frames(1);
    expect_same(untouched, *p[1]);
    EXPECT_EQ(1.0f, p[0]->position.x - untouched.position.x);
    EXPECT_EQ(0.25f, p[2]->age);
    x.host.run_frames(3);
    EXPECT_EQ(Records{p[1]}, x.host.active(x.smoke)) << "the others died";
    EXPECT_EQ(1e7f, x.host.bounding_box(x.smoke).minimum.x) << "alive, but in no box";
    EXPECT_EQ(-1e7f, x.host.bounding_box(x.smoke).maximum.z);
    x.host.set(x.smoke, "birth_rate", 1e7);
    x.host.run_frames(1);
    ASSERT_EQ(3, x.host.active_count(x.smoke));
    for (const Particle* born : {p[0], p[2]}) {
        EXPECT_EQ(0, born->claimed + born->released);
        EXPECT_EQ(255.0f, born->alpha);
    }
}

TEST(Exchange, AConsumerMayOwnTheColours) {
    for (const uint8_t owns : {uint8_t{0}, uint8_t{1}}) {
        Exchange x(1);
        x.attach({0, 100, owns});
        x.claim_all();
        Particle& p = *x.host.active(x.smoke).at(0);
        p.color[0] = 11;
        p.alpha = -1;
        x.host.run_frames(1);
        EXPECT_EQ(owns ? 11 : 255, p.color[0]);
        EXPECT_GT(p.alpha, 200.0f) << "the smoke still sets the opacity";
        EXPECT_THAT(x.host.pass(x.smoke),
                    testing::Contains(testing::StartsWith(owns ? "glColor4ub(11, " : "glColor4ub(255, ")));
        x.host.set(x.smoke, "use_array", true);
        x.host.run_frames(1);
        x.host.pass(x.smoke);
        EXPECT_EQ(255, stage::recorded_draws().at(0).colors.values.at(0)) << "arrays always use the smoke's colours";
        EXPECT_EQ(owns ? 11 : 255, p.color[0]) << "and do not write the records";
        x.host.set(x.smoke, "use_array", false);
        x.detach();
        x.host.set(x.smoke, "birth_rate", 1e7);
        x.host.run_frames(1);
        EXPECT_EQ(255, p.color[0]) << "the smoke sets colours again";
    }
}

TEST(Exchange, ShrinkingKeepsClaimedRecords) {
    Exchange x(6);
    x.attach();
    const Records p = x.host.active(x.smoke);
    x.claim_all();
    p[1]->claimed = 0;  // freed in the next frame
    x.host.set(x.smoke, "number_of_particles", 2);
    x.host.run_frames(1);
    EXPECT_EQ((Records{p[4], p[5]}), x.host.active(x.smoke)) << "the youngest went";
    EXPECT_EQ((Records{p[3], p[2], p[0]}), x.host.deleted(x.smoke));
    EXPECT_EQ(p[3], x.attach()->deleted_head);
    p[2]->claimed = 0;
    x.host.run_frames(1);
    EXPECT_EQ((Records{p[3], p[0]}), x.host.deleted(x.smoke));
    p[3]->claimed = 0;
    x.host.set(x.smoke, "freeze_motion", true);
    x.host.run_frames(1);
    EXPECT_EQ(Records{p[0]}, x.host.deleted(x.smoke)) << "frozen or not";
    x.detach();
    EXPECT_TRUE(x.host.deleted(x.smoke).empty());
    EXPECT_EQ((Records{p[5], p[4]}), x.host.inactive(x.smoke));
    EXPECT_EQ(0, p[4]->claimed + p[5]->claimed);
}

TEST(Exchange, DetachingReturnsAllParticles) {
    Exchange x(4);
    x.attach({0, 50, 1});
    x.claim_all();
    x.host.press(x.smoke, "reset");
    x.host.inactive(x.smoke)[2]->released = 1;
    x.host.inactive(x.smoke)[2]->accelerated = 1;
    x.detach();
    for (const Particle* p : x.host.inactive(x.smoke)) EXPECT_EQ(0, p->claimed);
    EXPECT_EQ(50.0f, x.block().parameters.life_time_scale) << "the written value stays";
    x.host.set(x.smoke, "birth_rate", 1e7);
    x.host.run_frames(1);
    ASSERT_EQ(4, x.host.active_count(x.smoke));
    for (const Particle* p : x.host.active(x.smoke)) EXPECT_EQ(0, p->claimed + p->released + p->accelerated);
    x.detach();  // without being attached: the same
    EXPECT_EQ(0, x.host.active_count(x.smoke));
}

/// A smoke of ten with the test as its spawn plug-in: `act` runs in the third request with this code of the first frame
/// with births. The second youngest particle dies in that frame.
struct Asked {
    Asked(int32_t code, void (*act)(Asked&)) {
        host.add_outlines("shape", {});
        smoke = host.add_smoke({{"spawn_type", 2},
                                {"spawn_cont_name", "shape"},
                                {"birth_rate", 1e7},
                                {"number_of_particles", 10},
                                {"life_time_scale", 50.0}});
        host.add_smoke({{"birth_rate", 1e7}, {"life_time", 0.05}}, "other");
        host.run_frames(1);
        host.stage().overrides.geom_dispatcher = [this, code, act](int32_t, int32_t asked, void*, void* reply) {
            if (asked == TOVU_REQUEST_IS_INSIDE && inside_tests == 0) host.active(smoke)[1]->life = -1;
            int& count = asked == TOVU_REQUEST_IS_INSIDE ? inside_tests : points;
            count += asked != TOVU_REQUEST_SUPPLIES_SPAWN_POINTS;
            if (asked == code && count == 3) act(*this);
            return *static_cast<int32_t*>(reply) = 1;
        };
    }
    void send(int32_t code) {
        ParticleAttachRequest request{0, 40, 1};
        ParticleExchangeBlock* reply = nullptr;
        stage::dispatch(host.stage(), smoke.container, code, &request, &reply);
    }
    /// Expects that each record is on a list and that a pass draws the live ones.
    void expect_sound() {
        host.render(smoke);
        const SmokeInstance& block = host.block(smoke);
        const int live = host.active_count(smoke);
        EXPECT_EQ(block.particle_count, live + static_cast<int>(host.inactive(smoke).size()));
        EXPECT_EQ(block.consumer_attached ? 0 : live, block.draw_count);
    }
    RenderHost host;
    SmokeHandle smoke;
    int points = 0;
    int inside_tests = 0;
};

struct Outcome {
    int live, points, inside_tests;
};

TEST(Exchange, ActionsInsideARequestTakeEffectAtOnce) {
    const struct {
        const char* name;
        void (*act)(Asked&);
        Outcome of_births, of_walk;  // acting in a request for a point, or for an inside test
    } rows[] = {
        {"nothing", [](Asked&) {}, {9, 10, 9}, {9, 10, 9}},
        {"attaching", [](Asked& a) { a.send(TOVU_REQUEST_ATTACH); }, {10, 10, 0}, {9, 10, 3}},
        {"detaching", [](Asked& a) { a.send(TOVU_REQUEST_DETACH); }, {0, 3, 0}, {0, 10, 3}},
        {"a reset", [](Asked& a) { a.host.press(a.smoke, "reset"); }, {0, 3, 0}, {0, 10, 3}},
        {"another button", [](Asked& a) { a.host.press(a.smoke, "build_alpha"); }, {9, 10, 9}, {9, 10, 9}},
        {"a pass", [](Asked& a) { a.expect_sound(); }, {9, 10, 9}, {9, 10, 9}},
        {"a frame of every smoke", [](Asked& a) { a.host.run_frames(2); }, {9, 10, 9}, {9, 10, 9}},
        {"no source", [](Asked& a) { a.host.set(a.smoke, "spawn_cont_name", ""); }, {3, 3, 0}, {9, 10, 3}},
        {"a smaller pool", [](Asked& a) { a.host.set(a.smoke, "number_of_particles", 4); }, {9, 10, 9}, {9, 10, 9}},
    };
    for (const auto& row : rows)
        for (const int32_t code : {TOVU_REQUEST_NEW_SPAWN_POINT, TOVU_REQUEST_IS_INSIDE})
            for (const bool has_caches : {true, false}) {
                const bool births = code == TOVU_REQUEST_NEW_SPAWN_POINT;
                SCOPED_TRACE(testing::Message() << row.name << (births ? ", births" : ", walk") << has_caches);
                Asked asked(code, row.act);
                InstanceCaches*& caches = asked.host.block(asked.smoke).caches;
                InstanceCaches* const kept = caches;
                if (!has_caches) caches = nullptr;
                asked.host.run_frames(1);
                const Outcome& expected = births ? row.of_births : row.of_walk;
                EXPECT_EQ(expected.live, asked.host.active_count(asked.smoke));
                EXPECT_EQ(expected.points, asked.points);
                EXPECT_EQ(expected.inside_tests, asked.inside_tests);
                for (int frame = 0; frame < 3; ++frame) {
                    asked.expect_sound();
                    asked.host.run_frames(1);
                }
                EXPECT_THAT(asked.host.complaints(), testing::IsEmpty());
                caches = kept;
            }
}

enum class Memory { kPlenty, kNoCaches, kArrayStaysSmall };

/// Draw count and lists of a smoke after each frame of random operations.
std::vector<std::string> random_life(Memory memory, unsigned seed) {
    Exchange x(8);
    x.host.set(x.smoke, "life_time", 2.0);
    x.host.set(x.smoke, "life_time_spread", 90.0);
    std::srand(seed);
    std::mt19937 random(seed);
    InstanceCaches* const caches = x.block().caches;
    if (memory == Memory::kNoCaches) x.block().caches = nullptr;
    std::vector<std::string> frames;
    for (int frame = 0; frame < 1000; ++frame) {
        const auto choice = random() % 32, amount = random() % 200;
        if (choice < 8) x.host.set(x.smoke, "birth_rate", static_cast<double>(amount));
        if (choice == 9 || choice == 10) x.host.set(x.smoke, "number_of_particles", static_cast<int>(amount));
        if (choice == 11) x.host.press(x.smoke, "reset");
        if (choice == 12) x.attach({static_cast<int32_t>(amount), 100, 0});
        if (choice == 13) x.detach();
        for (Particle* p : x.host.active(x.smoke))
            if (choice > 26) p->claimed = static_cast<int32_t>(random() % 2);
        if (memory == Memory::kArrayStaysSmall) {
            ActiveArray small;
            small.records.reserve(8);
            caches->active = std::move(small);
            caches->active.mirrors_links = frame % 2 == 0 && x.block().active_head == nullptr;
        }
        x.host.run_frames(1);
        x.host.render(x.smoke);
        std::string& text = frames.emplace_back(std::to_string(x.block().draw_count));
        for (const Records& list : {x.host.active(x.smoke), x.host.inactive(x.smoke), x.host.deleted(x.smoke)}) {
            text += " |";
            for (const Particle* p : list) text += ' ' + std::to_string(p->life) + '@' + std::to_string(p->age);
        }
    }
    x.block().caches = caches;
    return frames;
}

TEST(ActiveArray, ChangesNothing) {
    const RandomSeed seed;
    const std::vector<std::string> expected = random_life(Memory::kNoCaches, seed.value);
    for (const Memory memory : {Memory::kPlenty, Memory::kArrayStaysSmall}) {
        const std::vector<std::string> frames = random_life(memory, seed.value);
        for (size_t i = 0; i < frames.size(); ++i) ASSERT_EQ(expected[i], frames[i]) << "frame " << i;
    }
}

}  // namespace
}  // namespace tovu
