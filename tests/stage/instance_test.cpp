// Instances: slots and texts, notices, random streams, the order of calls, and plug-ins that break the contract.
#include <gmock/gmock.h>

#include <cstdlib>

#include "host_services.h"
#include "probe_plugin.h"
#include "stage/plugins/frames.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Instances : public testing::Test {
  protected:
    explicit Instances(StageOptions options = {}) : stage_(make_stage(options)) {
        const auto id = load_plugin(*stage_, std::string(TOVU_BINARY_DIR) + "/plugins/tests/probe_plugin.so");
        if (!id) throw std::runtime_error(id.error().message);
        plugin_ = *id;
    }

    int32_t add_probe(const std::string& name, const ParameterValues& values = {}, int32_t parent = kNoObject) {
        const int32_t container = add_container(*stage_, name, parent);
        const auto added = add_instance(*stage_, container, plugin_, values);
        if (!added) throw std::runtime_error(added.error().message);
        return container;
    }
    ProbeInstance& block(int32_t container) { return *static_cast<ProbeInstance*>(instance_block(*stage_, container)); }
    std::vector<int32_t> drawn(int32_t container) {
        const auto& numbers = block(container).random;
        return {std::begin(numbers), std::end(numbers)};
    }

    StagePtr stage_;
    PluginId plugin_ = 0;
};

const char* text_at(uint32_t slot) {
    return reinterpret_cast<const char*>(static_cast<uintptr_t>(slot));
}

TEST_F(Instances, BlockHoldsTheValuesBeforeItIsBuilt) {
    const int32_t container = add_probe("probe", {{"count", 7}, {"mode", "Slow"}, {"target", "elsewhere"}});
    const ProbeInstance& probe = block(container);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(&probe) % 8, 0u);
    EXPECT_EQ(probe.count, 7);
    EXPECT_EQ(probe.amount, 0.5f);
    EXPECT_EQ(probe.on, 1);
    EXPECT_EQ(probe.mode, 0);
    EXPECT_STREQ(text_at(probe.text), "hello");
    EXPECT_STREQ(text_at(probe.target), "elsewhere");
    EXPECT_STREQ(text_at(probe.picture), "");
    EXPECT_EQ(probe.container, container);
    EXPECT_EQ(probe.geometry, find_container(*stage_, container)->geometry_handle);
    EXPECT_EQ(probe.changes, 0);
    EXPECT_EQ(probe.random[7], 0) << "zeroed behind the slots";
}

TEST_F(Instances, EveryTextOfManyInstancesIsWithinReachOf32Bits) {
    for (int i = 0; i < 200; ++i) {
        const std::string text = "text " + std::to_string(i);
        const int32_t container = add_probe("probe", {{"text", text}});
        ASSERT_STREQ(text_at(block(container).text), text.c_str());
        const std::string name(kLongestObjectName, 'n');
        ASSERT_TRUE(set_parameter(*stage_, container, "picture", name));
        ASSERT_EQ(text_at(block(container).picture), name);
        ASSERT_EQ(block(container).last_change, 6);
    }
}

struct SetCase {
    const char* parameter;
    ParameterValue value;
    ParameterValue read_back;
    const char* refusal;  // null when the value is taken
};
const SetCase kSetCases[] = {
    {"count", 10, 10, nullptr},
    {"count", 11, {}, "parameter 'count' takes a whole number from -5 to 10, not 11"},
    {"count", -6, {}, "from -5 to 10, not -6"},
    {"count", 2.5, {}, "a whole number"},
    {"count", true, {}, "a whole number from -5 to 10, not true"},
    {"count", "2", {}, "not \"2\""},
    {"amount", 2, 2.0, nullptr},
    {"amount", 0.1, double{0.1f}, nullptr},
    {"amount", 999999.9, 999999.875, nullptr},
    {"amount", 1e6, {}, "parameter 'amount' takes a number from 0 to 999999.9, not 1000000"},
    {"amount", -0.001, {}, "not -0.001"},
    {"amount", std::nan(""), {}, "not nan"},
    {"amount", "much", {}, "a number from 0"},
    {"on", false, false, nullptr},
    {"on", 1, {}, "parameter 'on' takes true or false, not 1"},
    {"mode", "Slow", "Slow", nullptr},
    {"mode", 0, "Slow", nullptr},
    {"mode", 2, {}, "parameter 'mode' takes one of \"Slow\", \"Fast\", not 2"},
    {"mode", "slow", {}, "one of \"Slow\", \"Fast\", not \"slow\""},
    {"text", "exactly twenty bytes", "exactly twenty bytes", nullptr},
    {"text", "now one byte too many", {}, "parameter 'text' takes a text of at most 20 bytes"},
    {"text", std::string("a\0b", 3), {}, "NUL"},
    {"text", 5, {}, "a text of at most 20 bytes, not 5"},
    {"target", "", "", nullptr},
    {"cuont", 1, {}, "parameter 'cuont' is not known to Probe; did you mean 'count'?"},
    {"something else", 1, {}, "parameter 'something else' is not known to Probe"},
};

TEST_F(Instances, ParametersTakeWhatWasRegisteredOnly) {
    const int32_t container = add_probe("probe");
    for (const SetCase& row : kSetCases) {
        const auto before = get_parameter(*stage_, container, row.parameter);
        const auto set = set_parameter(*stage_, container, row.parameter, row.value);
        const auto after = get_parameter(*stage_, container, row.parameter);
        if (!row.refusal) {
            ASSERT_TRUE(set) << set.error().message;
            EXPECT_EQ(*after, row.read_back) << row.parameter;
            continue;
        }
        ASSERT_FALSE(set) << row.refusal;
        EXPECT_THAT(set.error().message, testing::AllOf(HasSubstr("container 'probe': "), HasSubstr(row.refusal)));
        if (before) {
            EXPECT_EQ(*before, *after) << row.refusal;
        }
        const auto bare = add_container(*stage_, "bare");
        const auto added = add_instance(*stage_, bare, plugin_, {{row.parameter, row.value}});
        ASSERT_FALSE(added);
        EXPECT_THAT(added.error().message, HasSubstr(row.refusal));
        EXPECT_EQ(geometry_of(*stage_, bare), nullptr) << "nothing half made";
    }
}

struct ParseCase {
    const char* parameter;
    const char* text;
    ParameterValue value;
    const char* refusal;
};
const ParseCase kParseCases[] = {
    {"count", "-4", -4, nullptr},
    {"count", "4.0", {}, "a whole number from -5 to 10, not \"4.0\""},
    {"count", "99", {}, "not 99"},
    {"count", "", {}, "not \"\""},
    {"amount", "1e3", 1000.0, nullptr},
    {"amount", "12 m", {}, "not \"12 m\""},
    {"on", "off", false, nullptr},
    {"on", "1", true, nullptr},
    {"on", "maybe", {}, "true or false, not \"maybe\""},
    {"mode", "Fast", "Fast", nullptr},
    {"mode", "1", 1, nullptr},
    {"mode", "Faster", {}, "one of \"Slow\", \"Fast\", not \"Faster\""},
    {"text", "7", "7", nullptr},
};

TEST_F(Instances, TextsAreReadAsTheParametersKind) {
    for (const ParseCase& row : kParseCases) {
        const auto value = parse_parameter(*find_parameter(plugin(plugin_), row.parameter), row.text);
        ASSERT_EQ(static_cast<bool>(value), row.refusal == nullptr) << row.parameter << ' ' << row.text;
        if (value)
            EXPECT_EQ(*value, row.value) << row.text;
        else
            EXPECT_THAT(value.error().message, HasSubstr(row.refusal));
    }
}

TEST_F(Instances, AreToldOfChangesOnly) {
    const int32_t container = add_probe("probe");
    const auto set = [&](const char* name, const ParameterValue& value, bool notify = true) {
        EXPECT_TRUE(set_parameter(*stage_, container, name, value, {notify}));
        return block(container).changes;
    };
    EXPECT_EQ(set("count", 3), 0) << "the default again";
    EXPECT_EQ(set("count", 4), 1);
    EXPECT_EQ(set("text", "hello"), 1) << "the same text again";
    EXPECT_EQ(set("text", "hullo"), 2);
    EXPECT_EQ(block(container).last_change, 4);
    EXPECT_EQ(set("text", "hallo", false), 2);
    EXPECT_STREQ(text_at(block(container).text), "hallo");
    EXPECT_TRUE(notify_changed(*stage_, container, 77));
    EXPECT_EQ(block(container).last_change, 77);
}

TEST_F(Instances, SlotsTakeAnyBits) {
    const int32_t container = add_probe("probe");
    ASSERT_TRUE(set_slot_bits(*stage_, container, 1, 0x7FC00001));
    ASSERT_TRUE(set_slot_bits(*stage_, container, 3, 0xFFFFFFFF));
    EXPECT_EQ(*get_parameter(*stage_, container, "mode"), ParameterValue(-1));
    EXPECT_TRUE(std::isnan(block(container).amount));
    ASSERT_TRUE(set_slot_bits(*stage_, container, 4, 0));
    EXPECT_EQ(*get_parameter(*stage_, container, "text"), ParameterValue(std::string()));
    ASSERT_TRUE(set_slot_bits(*stage_, container, 4, 12));
    EXPECT_THAT(get_parameter(*stage_, container, "text").error().message, HasSubstr("no longer holds the address"));
    EXPECT_FALSE(set_slot_bits(*stage_, container, 7, 0));
    EXPECT_EQ(block(container).changes, 0);
    ASSERT_TRUE(set_parameter(*stage_, container, "text", "back"));
    EXPECT_STREQ(text_at(block(container).text), "back");
}

TEST_F(Instances, ButtonsArePressedByName) {
    const int32_t container = add_probe("probe");
    EXPECT_TRUE(press_button(*stage_, container, "draw"));
    EXPECT_NE(drawn(container), std::vector<int32_t>(8, 0));
    EXPECT_THAT(press_button(*stage_, container, "reset").error().message,
                HasSubstr("button 'reset' is not known to Probe: it has draw, ask"));
}

TEST_F(Instances, HaveRandomNumbersOfTheirOwn) {
    std::srand(99);
    const std::vector<int> process = {std::rand(), std::rand()};

    const int32_t alone = add_probe("first");
    execute_action(*stage_, alone, kProbeDraw);
    const auto first_numbers = drawn(alone);
    execute_action(*stage_, alone, kProbeDraw);
    const auto next_numbers = drawn(alone);
    EXPECT_NE(first_numbers, next_numbers);

    stage_ = make_stage();
    std::srand(99);
    const int32_t first = add_probe("first");
    const int32_t second = add_probe("second");
    execute_action(*stage_, first, kProbeDraw);
    EXPECT_EQ(drawn(first), first_numbers) << "a new Stage repeats the run";
    EXPECT_EQ(std::rand(), process[0]);
    execute_action(*stage_, second, kProbeDraw);
    EXPECT_NE(drawn(second), first_numbers);
    execute_action(*stage_, first, kProbeDraw);
    EXPECT_EQ(drawn(first), next_numbers) << "whatever another one drew meanwhile";
    EXPECT_EQ(std::rand(), process[1]) << "and the process's own numbers go on untouched";

    stage_ = make_stage({.seed = 2});
    const int32_t other_seed = add_probe("first");
    execute_action(*stage_, other_seed, kProbeDraw);
    EXPECT_NE(drawn(other_seed), first_numbers);
}

TEST_F(Instances, KeepTheirRandomNumbersAcrossNestedCalls) {
    const int32_t asked = add_probe("asked");
    const int32_t asking = add_probe("asking", {{"target", "asked"}});
    execute_action(*stage_, asked, kProbeDraw);
    execute_action(*stage_, asking, kProbeDraw);
    const auto asked_alone = drawn(asked);
    const auto asking_alone = drawn(asking);

    stage_ = make_stage();
    const int32_t asked_again = add_probe("asked");
    const int32_t asking_again = add_probe("asking", {{"target", "asked"}});
    EXPECT_TRUE(press_button(*stage_, asking_again, "ask"));
    EXPECT_EQ(block(asking_again).last_request, 3) << "dispatcher and reply both 1";
    EXPECT_EQ(drawn(asked_again), asked_alone);
    EXPECT_EQ(drawn(asking_again), asking_alone) << "four numbers before the request and four after it";
}

class SharedRandom : public Instances {
  protected:
    SharedRandom() : Instances({.seed = 5, .shared_random = true}) {}
};

TEST_F(SharedRandom, IsTheProcessWideGenerator) {
    const int32_t first = add_probe("first");
    const int32_t second = add_probe("second");
    execute_action(*stage_, first, kProbeDraw);
    execute_action(*stage_, second, kProbeDraw);
    std::srand(5);
    for (const int32_t container : {first, second})
        for (const int32_t number : drawn(container)) EXPECT_EQ(number, std::rand());
}

TEST_F(Instances, RunInTreeOrderAndGoNewestFirst) {
    const int32_t parent = add_container(*stage_, "parent");
    const int32_t last = add_probe("last");
    const int32_t child = add_probe("child", {}, parent);
    find_container(*stage_, parent)->visible = false;
    const auto changed = [&](int32_t container) {
        return "_api__set_geom_changed(" + std::to_string(block(container).geometry) + ")";
    };
    const auto calls = [] {
        std::vector<std::string> texts;
        for (const Call& call : recorded_calls()) texts.push_back(to_string(call));
        return texts;
    };
    const std::string of_child = changed(child);
    const std::string of_last = changed(last);
    start_recording_calls();
    run_frame(*stage_);
    EXPECT_THAT(calls(), ElementsAre(of_child, of_last)) << "hidden ones simulate too";
    EXPECT_EQ(stage_->clock.frame, 0);
    run_frame(*stage_);
    EXPECT_EQ(stage_->clock.frame, 1);
    EXPECT_EQ(stage_->clock.retrace_counter, 2);
    EXPECT_EQ(block(last).frames, 2);
    EXPECT_TRUE(call_render(*stage_, last, 1, 0.25f));
    EXPECT_EQ(block(last).opacity, 0.25f);

    start_recording_calls();
    stage_.reset();
    EXPECT_THAT(calls(), ElementsAre(of_child, of_last)) << "the child was made last";
    stop_recording_calls();
}

TEST_F(Instances, AreReachedThroughTheirGeometryWhileItLives) {
    const int32_t container = add_probe("probe");
    const int32_t geometry = block(container).geometry;
    int32_t reply = 0;
    EXPECT_EQ(_api__geom_dispatcher(geometry, kProbeRequestDraw, nullptr, &reply), 1);
    EXPECT_EQ(reply, 1);
    reply = 0;
    EXPECT_EQ(_api__geom_dispatcher(geometry, 1, nullptr, &reply), 1) << "taken, if not understood";
    EXPECT_EQ(reply, 0);
    int32_t access = -7;
    _api__get_geom_geomod(geometry, 2, 0, &access);
    EXPECT_EQ(access, 0) << "it has no meshes";

    const int32_t meshes = set_mesh_geometry(*stage_, container, {});
    EXPECT_NE(meshes, geometry);
    EXPECT_THAT(stage_->complaints.list, IsEmpty());
    EXPECT_EQ(_api__geom_dispatcher(meshes, kProbeRequestDraw, nullptr, &reply), 0);
    EXPECT_EQ(_api__geom_dispatcher(geometry, kProbeRequestDraw, nullptr, &reply), 0);
    EXPECT_EQ(stage_->complaints.list.size(), 1u);
}

struct BrokenRule {
    int32_t action;
    const char* call;
    const char* caller;
    const char* message;
};
const char* const kByAction = "PLUGIN_EXEC_ACTION of Probe in 'probe'";
const BrokenRule kBrokenRules[] = {
    {kProbeWritePastBlock, "PLUGIN_EXEC_ACTION", kByAction, "wrote past the end of its block of "},
    {kProbeWritePastText, "PLUGIN_EXEC_ACTION", kByAction, "wrote past the 21 bytes of the text of 'text'"},
    {kProbeLeaveSectionOpen, "pelEventStart", kByAction, "'Work' was still open when PLUGIN_EXEC_ACTION returned"},
    {kProbeEndWithoutStart, "pelEventEnd", kByAction, "does not end the section begun last"},
    {kProbeRegisterLate, "pelRegisterParameterBool", kByAction, "registration is over"},
};

TEST_F(Instances, ThatBreakARuleAreNamed) {
    for (const BrokenRule& row : kBrokenRules) {
        const int32_t container = add_probe("probe");
        stage_->complaints = {};
        execute_action(*stage_, container, row.action);
        ASSERT_EQ(stage_->complaints.list.size(), 1u) << row.message;
        EXPECT_EQ(stage_->complaints.list[0].call, row.call);
        EXPECT_EQ(stage_->complaints.list[0].caller, row.caller);
        EXPECT_THAT(stage_->complaints.list[0].message, HasSubstr(row.message));
        execute_action(*stage_, container, 0);
        EXPECT_EQ(stage_->complaints.list[0].times, 1) << "told once for each time it happens";
        EXPECT_TRUE(remove_container(*stage_, container));
    }
}

TEST_F(Instances, LocalObjectsAreThoseOfTheRunningInstance) {
    add_probe("probe");
    EXPECT_EQ(_api__get_objectid_local("", TOVU_OBJECT_CONTAINER), kNoObject);
    ASSERT_EQ(stage_->complaints.list.size(), 1u);
    EXPECT_THAT(stage_->complaints.list[0].message, HasSubstr("no instance is being called"));
}

TEST_F(Instances, SectionsAreTimed) {
    std::vector<std::string> spans;
    stage_->profile.sink = [&](const TraceSpan& span) {
        EXPECT_GE(span.duration_seconds, 0);
        spans.push_back(std::string(span.event) + " in " + std::string(span.container));
    };
    const int32_t container = add_probe("probe");
    execute_action(*stage_, container, kProbeSection);
    execute_action(*stage_, container, kProbeSection);
    stage_->profile.sink = nullptr;
    EXPECT_THAT(spans, ElementsAre("PLUGIN_INIT_FUNCTION in probe", "Work in probe", "PLUGIN_EXEC_ACTION in probe",
                                   "Work in probe", "PLUGIN_EXEC_ACTION in probe"));
    const EventTotals& totals = stage_->profile.totals.at(plugin(plugin_).events[0].handle);
    EXPECT_EQ(totals.name, "Work");
    EXPECT_EQ(totals.count, 2);
    EXPECT_THAT(stage_->complaints.list, IsEmpty());
}

}  // namespace
}  // namespace stage
