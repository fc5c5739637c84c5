// The number and time of births: the clock, the birth accumulator and the pool of records.
#include <gmock/gmock.h>

#include <cmath>

#include "render_host.h"

namespace tovu {
namespace {

TEST(Births, LiveAfterFrames) {
    const struct {
        const char* name;
        double rate;            // births per second
        double period_seconds;  // of a frame
        int frames;
        int live;  // of a pool of 100; nobody dies
    } rows[] = {
        {"a period of one frame: none in the first", 50, 0.02, 1, 0},
        {"a period of one frame: two after the second", 50, 0.02, 2, 2},
        {"two in every frame", 64, 0.03125, 10, 20},
        {"rate zero never gives birth", 0, 0.02, 100, 0},
        {"the pool is the limit", 1e7, 0.02, 1, 100},
        {"more are due than an integer holds", 1e7, 300, 1, 100},
        {"a fraction of a birth stays due", 75, 0.03125, 1, 2},
        {"the fraction counts later", 75, 0.03125, 3, 7},
    };
    for (const auto& row : rows) {
        TestHost host(1, row.period_seconds);
        const SmokeHandle smoke = host.add_smoke({{"birth_rate", row.rate}, {"life_time", 1000.0}});
        host.run_frames(row.frames);
        EXPECT_EQ(row.live, host.active_count(smoke)) << row.name;
    }
}

TEST(Births, AreLostWithoutAFreeRecord) {
    TestHost host(1, 0.25);
    const SmokeHandle smoke = host.add_smoke({{"birth_rate", 64.0}, {"number_of_particles", 3}, {"life_time", 1000.0}});
    host.run_frames(1);
    EXPECT_EQ(0.0f, host.block(smoke).birth_accumulator) << "16 births were due";
    host.set(smoke, "number_of_particles", 100);
    host.set(smoke, "birth_rate", 8.0);
    host.run_frames(1);
    EXPECT_EQ(5, host.active_count(smoke));
}

TEST(Clock, DecidesTheTimeStep) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(5);
    const struct {
        const char* name;
        int retraces;  // since the last frame
        bool recording;
        double post_time;
        float seconds;  // that the frame advances
    } frames[] = {{"the same retrace is the same frame", 0, false, 0, 0},
                  {"several retraces advance one period", 3, false, 0, 0.02f},
                  {"the first frame of a recording", 1, true, 8, 0},
                  {"a later frame of a recording", 1, true, 8.5, 0.5f},
                  {"the same time is the same frame", 1, true, 8.5, 0},
                  {"a recording time that goes back", 1, true, 6, 0},
                  {"back to live playback", 1, false, 7, 0.02f},
                  {"a second recording counts from the last time", 1, true, 9, 3}};
    for (const auto& frame : frames) {
        const float before = host.active(smoke).front()->age;
        if (frame.retraces) stage::advance_frame(host.stage(), frame.retraces);
        host.stage().clock.post_recording = frame.recording;
        host.stage().clock.post_time_seconds = frame.post_time;
        stage::new_frame(host.stage());
        EXPECT_EQ(before + frame.seconds, host.active(smoke).front()->age) << frame.name;
    }
}

TEST(Clock, IgnoresOddTimes) {
    const struct {
        const char* name;
        double seconds;  // frame period, or recording time
        bool recording;  // whose time was 8 before
        bool goes_on;    // true: a step of time 0; false: the step returns at once
    } rows[] = {{"below 0", -1, false, true},
                {"below float32", -1e39, false, true},
                {"minus infinity", -HUGE_VAL, false, true},
                {"not a number", std::nan(""), false, false},
                {"infinity", HUGE_VAL, false, false},
                {"above float32", 1e39, false, false},
                {"a clock at minus infinity", -HUGE_VAL, true, true},
                {"a clock that is not a number", std::nan(""), true, false},
                {"a clock at infinity", HUGE_VAL, true, false}};
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

TEST(Clock, BirthsInAStepOfNoTimeStandStill) {
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

/// Numbers the records from 1, live ones first, in the unused field `reserved`.
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

TEST(Pool, ShrinksByPooledRecordsThenByTheYoungest) {
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

TEST(Pool, ReusesTheLastDeadFirst) {
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
