// How many are born when: the clock, the accumulator, and the pool of records.
#include <gmock/gmock.h>

#include <cmath>

#include "render_host.h"
#include "stage/plugins/parameters.h"

namespace tovu {
namespace {

TEST(Births, LiveAfterFrames) {
    const struct {
        const char* name;
        double rate;            // births per second
        double period_seconds;  // of a frame
        int frames;
        int live;  // of a pool of 100 whose lives are long
    } rows[] = {
        {"an equal period waits a frame", 50, 0.02, 1, 0},
        {"and is then made up", 50, 0.02, 2, 2},
        {"30 a second: none in the first frame", 30, 0.02, 1, 0},
        {"30 a second: one in the second", 30, 0.02, 2, 1},
        {"two in every frame", 64, 0.03125, 10, 20},
        {"rate zero never gives birth", 0, 0.02, 100, 0},
        {"the pool is the limit", 1e7, 0.02, 1, 100},
        {"a fraction of a birth stays due", 75, 0.03125, 1, 2},
        {"and counts later", 75, 0.03125, 3, 7},
    };
    for (const auto& row : rows) {
        TestHost host(1, row.period_seconds);
        const SmokeHandle smoke = host.add_smoke({{"birth_rate", row.rate}, {"life_time", 1000.0}});
        host.run_frames(row.frames);
        EXPECT_EQ(row.live, host.active_count(smoke)) << row.name;
    }
}

TEST(Births, ThoseThatFoundNoRecordAreLost) {
    TestHost host(1, 0.25);
    const SmokeHandle smoke = host.add_smoke({{"birth_rate", 64.0}, {"number_of_particles", 3}, {"life_time", 1000.0}});
    host.run_frames(1);
    EXPECT_EQ(0.0f, host.block(smoke).birth_accumulator) << "16 births were due";
    host.set(smoke, "number_of_particles", 100);
    host.set(smoke, "birth_rate", 8.0);
    host.run_frames(1);
    EXPECT_EQ(5, host.active_count(smoke));
}

TEST(Births, ARateOfNegativeZeroIsZero) {
    TestHost host;
    const SmokeHandle smoke = host.add_smoke();
    stage::set_slot_bits(host.stage(), smoke.container, kIndex_birth_rate, 0x80000000u);
    host.run_frames(10);
    EXPECT_EQ(0, host.active_count(smoke));
    host.set(smoke, "birth_rate", 30.0);
    host.run_frames(1);
    EXPECT_EQ(6, host.active_count(smoke)) << "the time since then was kept";
}

TEST(Clock, TellsHowFarAFrameAdvances) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(5);
    const struct {
        const char* name;
        int retraces;  // since the last frame
        bool recording;
        double post_time;
        float seconds;  // that the frame advances
    } frames[] = {{"the same retrace is the same frame", 0, false, 0, 0},
                  {"one frame however many retraces passed", 3, false, 0, 0.02f},
                  {"a recording's first has no time before it", 1, true, 8, 0},
                  {"then the difference", 1, true, 8.5, 0.5f},
                  {"the same time is the same frame", 1, true, 8.5, 0},
                  {"a clock set back does not move", 1, true, 6, 0},
                  {"live again", 1, false, 7, 0.02f},
                  {"another recording goes on from the last time", 1, true, 9, 3}};
    for (const auto& frame : frames) {
        const float before = host.active(smoke).front()->age;
        if (frame.retraces) stage::advance_frame(host.stage(), frame.retraces);
        host.stage().clock.post_recording = frame.recording;
        host.stage().clock.post_time_seconds = frame.post_time;
        stage::new_frame(host.stage());
        EXPECT_EQ(before + frame.seconds, host.active(smoke).front()->age) << frame.name;
    }
}

TEST(Clock, OddTimesPassNoTime) {
    const struct {
        const char* name;
        bool recording;  // by a clock that stood at 8
        double seconds;  // of the frame, or on that clock
        bool goes_on;    // as a step of no time; otherwise the step returns at once
    } rows[] = {{"below 0", false, -1, true},
                {"below float32", false, -1e39, true},
                {"minus infinity", false, -HUGE_VAL, true},
                {"not a number", false, std::nan(""), false},
                {"infinity", false, HUGE_VAL, false},
                {"above float32", false, 1e39, false},
                {"a clock at minus infinity", true, -HUGE_VAL, true},
                {"a clock that is not a number", true, std::nan(""), false},
                {"a clock at infinity", true, HUGE_VAL, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        RenderHost host;
        const SmokeHandle smoke = host.smoke_of(5);
        stage::Clock& clock = host.stage().clock;
        clock.post_recording = row.recording;
        clock.post_time_seconds = 8;
        if (row.recording) stage::new_frame(host.stage());
        const float age = host.active(smoke).back()->age;
        (row.recording ? clock.post_time_seconds : clock.frame_period_seconds) = row.seconds;
        host.set(smoke, "number_of_particles", 7);
        host.run_frames(1);
        EXPECT_EQ(row.goes_on ? 7 : 5, host.block(smoke).particle_count);
        EXPECT_EQ(age, host.active(smoke).back()->age);
        EXPECT_EQ(0.0, host.block(smoke).time_step);
        EXPECT_LT(host.block(smoke).birth_accumulator, 0.1f);
    }
}

TEST(Clock, BirthsInAFrameWithoutTimeStandStill) {
    TestHost host;
    const SmokeHandle smoke = host.add_smoke({{"birth_rate", 1e6}, {"number_of_particles", 4}, {"rot_change", 90.0}});
    host.run_frames(1);
    host.block(smoke).birth_accumulator = 1;  // time left over
    host.press(smoke, "reset");
    host.stage().clock.post_recording = true;
    host.run_frames(1);
    ASSERT_EQ(4, host.active_count(smoke));
    for (const Particle* p : host.active(smoke)) {
        EXPECT_EQ(5.0f, p->size_x);
        for (const float still :
             {p->age, p->velocity.x, p->velocity.y, p->velocity.z, p->size_step_x, p->size_step_y, p->rotation_step})
            EXPECT_EQ(0.0f, still);
    }
}

/// Numbers the records by what nothing changes, so that they can be told apart later: live ones first, from 1.
void name_records(TestHost& host, SmokeHandle smoke) {
    int name = 0;
    for (Particle* p : host.active(smoke)) p->reserved = ++name;
    for (Particle* p : host.inactive(smoke)) p->reserved = ++name;
}

std::vector<int> names_of(const std::vector<Particle*>& records) {
    std::vector<int> names;
    names.reserve(records.size());
    for (const Particle* p : records) names.push_back(p->reserved);
    return names;
}

TEST(Pool, ShrinksFromThePoolThenFromTheYoungest) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(4);
    const auto resize = [&](int count) {
        host.set(smoke, "number_of_particles", count);
        host.run_frames(1);
    };
    host.set(smoke, "birth_rate", 0.0);
    resize(7);
    name_records(host, smoke);
    resize(5);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), names_of(host.active(smoke)));
    EXPECT_EQ((std::vector<int>{7}), names_of(host.inactive(smoke))) << "the pool gives from its head";
    resize(3);
    EXPECT_EQ((std::vector<int>{2, 3, 4}), names_of(host.active(smoke)));
    EXPECT_TRUE(host.inactive(smoke).empty());
    host.press(smoke, "reset");
    EXPECT_EQ((std::vector<int>{4, 3, 2}), names_of(host.inactive(smoke))) << "the oldest first";
    resize(5);
    EXPECT_EQ((std::vector<int>{0, 0, 4, 3, 2}), names_of(host.inactive(smoke))) << "new records go in front";
    EXPECT_EQ(5, host.block(smoke).particle_count);
    resize(0);
    EXPECT_TRUE(host.inactive(smoke).empty());
}

TEST(Pool, TheDeadAreBornAgainFirst) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(5);
    host.set(smoke, "birth_rate", 0.0);
    name_records(host, smoke);
    for (Particle* p : host.active(smoke))
        if (p->reserved % 2 == 0) p->life = 0;
    host.run_frames(1);
    EXPECT_EQ((std::vector<int>{1, 3, 5}), names_of(host.active(smoke)));
    EXPECT_EQ((std::vector<int>{4, 2}), names_of(host.inactive(smoke)));
    host.block(smoke).birth_accumulator = 0.5f;
    host.set(smoke, "birth_rate", 3.0);
    host.run_frames(1);
    EXPECT_EQ((std::vector<int>{4, 1, 3, 5}), names_of(host.active(smoke)));
}

}  // namespace
}  // namespace tovu
