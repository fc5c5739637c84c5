// Instances: slots and texts, notices, random streams, the order of calls, and plug-ins that break the contract.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <tovu/host_services.h>

#include <cstdlib>

#include "expect.h"
#include "probe_plugin.h"
#include "stage/plugins/frames.h"
#include "stage/plugins/instance.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Instances : public testing::Test {
  protected:
    Instances() {
        const auto id = load_plugin(*stage, std::string(TOVU_BINARY_DIR) + "/plugins/tests/probe_plugin.so");
        if (!id) throw std::runtime_error(id.error().message);
        probe_plugin = *id;
    }

    int32_t add_probe(const std::string& name, const ParameterValues& values = {}, int32_t parent = kNoObject) {
        const int32_t container = add_container(*stage, name, parent);
        const auto added = add_instance(*stage, container, probe_plugin, values);
        if (!added) throw std::runtime_error(added.error().message);
        return container;
    }
    ProbeInstance& block(int32_t container) {
        void* block = instance_of(*stage, container)->block;
        return *static_cast<ProbeInstance*>(block);
    }
    /// The random numbers that the instance drew last.
    std::vector<int32_t> drawn(int32_t container) {
        const auto& numbers = block(container).random;
        return {std::begin(numbers), std::end(numbers)};
    }
    std::vector<int32_t> draw(int32_t container) {
        execute_action(*stage, container, kProbeDraw);
        return drawn(container);
    }

    StagePtr stage = make_stage();
    PluginId probe_plugin = 0;
};

const char* text_at(uint32_t slot) {
    return reinterpret_cast<const char*>(static_cast<uintptr_t>(slot));
}

struct SetCase {
    const char* parameter;
    ParameterValue value;
    ParameterValue read_back;
    const char* refusal;  // null if the value is accepted
};
const SetCase kSetCases[] = {
    {"count", 10, 10, nullptr},
    {"count", 11, {}, "parameter 'count' takes a whole number from -5 to 10, not 11"},
    {"count", -6, {}, "from -5 to 10, not -6"},
    {"count", true, {}, "a whole number from -5 to 10, not true"},
    {"amount", 2, 2.0, nullptr},
    {"amount", 999999.9, 999999.875, nullptr},
    {"amount", 1e6, {}, "parameter 'amount' takes a number from 0 to 999999.9, not 1000000"},
    {"amount", -0.001, {}, "not -0.001"},
    {"amount", std::nan(""), {}, "not nan"},
    {"on", false, false, nullptr},
    {"on", 1, {}, "parameter 'on' takes true or false, not 1"},
    {"mode", "Slow", "Slow", nullptr},
    {"mode", 2, {}, "parameter 'mode' takes one of \"Slow\", \"Fast\", not 2"},
    {"mode", "slow", {}, "one of \"Slow\", \"Fast\", not \"slow\""},
    {"text", "exactly twenty bytes", "exactly twenty bytes", nullptr},
    {"text", "now one byte too many", {}, "parameter 'text' takes a text of at most 20 bytes"},
    {"text", std::string("a\0b", 3), {}, "NUL"},
    {"cuont", 1, {}, "parameter 'cuont' is not known to Probe: did you mean 'count'?"},
};

TEST_F(Instances, ParametersAcceptOnlyValidValues) {
    const int32_t container = add_probe("probe");
    for (const auto& [parameter, value, read_back, refusal] : kSetCases) {
        SCOPED_TRACE(std::string(parameter) + ": " + (refusal ? refusal : "taken"));
        const auto before = get_parameter(*stage, container, parameter);
        const auto set = set_parameter(*stage, container, parameter, value);
        ASSERT_EQ(static_cast<bool>(set), refusal == nullptr);
        if (const auto after = get_parameter(*stage, container, parameter); after) {
            EXPECT_EQ(*after, refusal ? *before : read_back);
        }
        if (!refusal) continue;
        EXPECT_THAT(set.error().message, testing::AllOf(HasSubstr("container 'probe': "), HasSubstr(refusal)));
        const auto bare = add_container(*stage, "bare");
        const auto added = add_instance(*stage, bare, probe_plugin, {{parameter, value}});
        ASSERT_FALSE(added);
        EXPECT_THAT(added.error().message, HasSubstr(refusal));
        EXPECT_EQ(geometry_of(*stage, bare), nullptr) << "nothing half made";
    }
}

TEST_F(Instances, AreNotifiedOfChangedValues) {
    const int32_t container = add_probe("probe");
    const auto set = [&](const char* name, const ParameterValue& value, bool notify = true) {
        EXPECT_TRUE(set_parameter(*stage, container, name, value, {notify}));
        return block(container).changes;
    };
    EXPECT_EQ(set("count", 3), 0) << "the default again";
    EXPECT_EQ(set("count", 4), 1);
    EXPECT_EQ(set("text", "hello"), 1) << "the same text again";
    EXPECT_EQ(set("text", "hullo"), 2);
    EXPECT_EQ(block(container).last_change, 4);
    EXPECT_EQ(set("text", "hallo", false), 2);
}

TEST_F(Instances, SlotsTakeAnyBits) {
    const int32_t container = add_probe("probe");
    const auto after = [&](int32_t slot, uint32_t bits, const char* parameter) {
        EXPECT_TRUE(set_slot_bits(*stage, container, slot, bits));
        return get_parameter(*stage, container, parameter);
    };
    EXPECT_TRUE(std::isnan(std::get<double>(*after(1, 0x7FC00001, "amount"))));
    EXPECT_EQ(*after(3, 0xFFFFFFFF, "mode"), ParameterValue(-1));
    EXPECT_EQ(*after(4, 0, "text"), ParameterValue(std::string()));
    EXPECT_THAT(after(4, 12, "text").error().message, HasSubstr("no longer holds the address"));
    EXPECT_FALSE(set_slot_bits(*stage, container, 7, 0));
    EXPECT_EQ(block(container).changes, 0);
    ASSERT_TRUE(set_parameter(*stage, container, "text", "back"));
    EXPECT_STREQ(text_at(block(container).text), "back");
}

TEST_F(Instances, KeepTheirRandomNumbersAcrossNestedCalls) {
    const auto asked_alone = draw(add_probe("asked"));
    const auto asking_alone = draw(add_probe("asking"));

    stage = make_stage();
    const int32_t asked = add_probe("asked"), asking = add_probe("asking", {{"target", "asked"}});
    stage->overrides.container_get_geometry = [](int32_t container, int32_t* geometry) {
        {
            const DrawFrom outside(nullptr);
            (void)std::rand();
        }
        _api__container_get_geometry(container, geometry);
    };
    std::srand(3);
    EXPECT_TRUE(press_button(*stage, asking, "ask"));
    EXPECT_EQ(tovu::draws_since(3), 1) << "the service drew from the process's numbers";
    EXPECT_EQ(block(asking).last_request, 3) << "dispatcher and reply both 1";
    EXPECT_EQ(drawn(asked), asked_alone);
    EXPECT_EQ(drawn(asking), asking_alone) << "four numbers before the request and four after it";
    EXPECT_THAT(press_button(*stage, asking, "reset").error().message,
                HasSubstr("Probe has no push button 'reset': known are: draw, ask"));
}

TEST_F(Instances, RunInTreeOrderAndAreCleanedUpNewestFirst) {
    const int32_t parent = add_container(*stage, "parent");
    const int32_t last = add_probe("last");
    const int32_t child = add_probe("child", {}, parent);
    find_container(*stage, parent)->visible = false;
    const auto changed = [&](int32_t container) {
        return "_api__set_geom_changed(" + std::to_string(block(container).geometry) + ")";
    };
    const std::string of_child = changed(child), of_last = changed(last);
    const auto calls = [] {
        std::vector<std::string> texts;
        for (const Call& call : recorded_calls()) texts.push_back(to_string(call));
        return texts;
    };
    start_recording_calls();
    run_frame(*stage);
    EXPECT_THAT(calls(), ElementsAre(of_child, of_last)) << "hidden ones simulate too";
    EXPECT_EQ(stage->clock.frame, 0);
    run_frame(*stage);
    EXPECT_EQ(stage->clock.frame, 1);
    EXPECT_EQ(stage->clock.retrace_counter, 2);

    start_recording_calls();
    stage.reset();
    EXPECT_THAT(calls(), ElementsAre(of_child, of_last)) << "the child was made last";
    stop_recording_calls();
}

TEST_F(Instances, AreReachedThroughTheirGeometryWhileItLives) {
    const int32_t container = add_probe("probe"), geometry = block(container).geometry;
    int32_t reply = 0, access = -7;
    EXPECT_EQ(_api__geom_dispatcher(geometry, 1, nullptr, &reply), 1) << "taken, if not understood";
    EXPECT_EQ(reply, 0);
    _api__get_geom_geomod(geometry, 2, 0, &access);
    EXPECT_EQ(access, 0) << "it has no meshes";

    const int32_t meshes = set_mesh_geometry(*stage, container, {});
    EXPECT_NE(meshes, geometry);
    EXPECT_EQ(_api__geom_dispatcher(meshes, kProbeRequestDraw, nullptr, &reply), 0);
    EXPECT_THAT(stage->complaints.list, IsEmpty());
    EXPECT_EQ(_api__geom_dispatcher(geometry, kProbeRequestDraw, nullptr, &reply), 0);
    EXPECT_EQ(stage->complaints.list.size(), 1u);
}

const std::tuple<int32_t, const char*, const char*> kBrokenRules[] = {
    // action, call and message of the complaint
    {kProbeWritePastBlock, "PLUGIN_EXEC_ACTION", "wrote past the end of its block of "},
    {kProbeWritePastText, "PLUGIN_EXEC_ACTION", "wrote past the 21 bytes of the text of 'text'"},
    {kProbeLeaveSectionOpen, "pelEventStart", "'Work' was still open when PLUGIN_EXEC_ACTION returned"},
    {kProbeEndWithoutStart, "pelEventEnd", "does not end the section begun last"},
    {kProbeRegisterLate, "pelRegisterParameterBool", "registration is over"},
};

TEST_F(Instances, ComplaintsNameThePlugInThatBreaksARule) {
    for (const auto& [action, call, message] : kBrokenRules) {
        SCOPED_TRACE(message);
        const int32_t container = add_probe("probe");
        stage->complaints = {};
        execute_action(*stage, container, action);
        execute_action(*stage, container, 0);  // does nothing; the complaint is not repeated
        ASSERT_EQ(stage->complaints.list.size(), 1u);
        const Complaint& complaint = stage->complaints.list[0];
        EXPECT_EQ(complaint.call, call);
        EXPECT_EQ(complaint.caller, "PLUGIN_EXEC_ACTION of Probe in 'probe'");
        EXPECT_THAT(complaint.message, HasSubstr(message));
        EXPECT_EQ(complaint.times, 1);
        EXPECT_TRUE(remove_container(*stage, container));
    }
    stage->complaints = {};
    EXPECT_EQ(_api__get_objectid_local("", TOVU_OBJECT_CONTAINER), kNoObject);
    ASSERT_EQ(stage->complaints.list.size(), 1u);
    EXPECT_THAT(stage->complaints.list[0].message, HasSubstr("no entry point of an instance"));
}

TEST(LowMemory, FindsFreePagesBelowFourGibibytes) {
    constexpr size_t kBytes = 100000;
    const auto is_low = [](const LowMemory& memory) {
        return memory.data() != nullptr &&
               uint64_t{reinterpret_cast<uintptr_t>(memory.data())} + memory.size() <= 0x100000000u;
    };
    const LowMemory first(kBytes);
    ASSERT_TRUE(is_low(first));
    // Maps a page at the start of the next search.
    char* after = first.data() + 0x20000;
    void* taken = mmap(after, 1, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_EQ(after, taken);
    *after = 'x';
    const LowMemory second(kBytes);
    ASSERT_TRUE(is_low(second));
    second.data()[0] = second.data()[kBytes - 1] = 'y';
    EXPECT_EQ('x', *after);
    EXPECT_EQ(0, first.data()[kBytes - 1]);
    munmap(taken, 1);

    // 6 GiB in total, each block freed before the next, so that freed pages must be found again.
    for (int round = 0; round < 12; ++round) EXPECT_TRUE(is_low(LowMemory(size_t{1} << 29))) << "round " << round;
    EXPECT_EQ(nullptr, LowMemory(0xFFFF0000u).data()) << "more than is left";
}

}  // namespace
}  // namespace stage
