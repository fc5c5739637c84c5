// `tovu validate`: the right check fails for each faulty sample, and correct plug-ins pass.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <nlohmann/json.hpp>

#include "../stage/temporary_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct Outcome {
    int status;
    std::string output;
};

Outcome validate(const std::string& arguments) {
    const TemporaryFolder folder;
    const std::string command =
        std::string(TOVU_PROGRAM) + " validate " + arguments + " >'" + (folder / "output").string() + "' 2>&1";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, file_bytes(folder / "output")};
}

std::string faulty(const std::string& fault) {
    return std::string(TOVU_BINARY_DIR) + "/plugins/faulty/faulty_" + fault + ".so";
}

// The checks that do not pass, warnings included, as "name state".
std::vector<std::string> broken_checks(const Outcome& outcome) {
    std::vector<std::string> names;
    const nlohmann::json report = nlohmann::json::parse(outcome.output);
    for (const auto& check : report["checks"])
        if (check["state"] != "ok" && check["state"] != "skip")
            names.push_back(check["name"].get<std::string>() + " " + check["state"].get<std::string>());
    return names;
}

const struct {
    const char* fault;
    const char* check;
    const char* state;
    const char* message;
} kFaults[] = {
    {"libm_forgotten", "file.imports", "fail", "link with the library that has it (-lm for mathematics)"},
    {"default_above", "register.values", "fail", "'quads' (0 to 64, default 100) has a default outside of its range"},
    {"size_of_pointer", "register.size", "fail", "a block of 8 bytes cannot hold 6 slots of 4 bytes"},
    {"name_not_tested", "life.cycle", "crash", "PLUGIN_NEW_GEOM +0x"},
    {"action_unknown", "life.orders", "crash", "SIGABRT"},
    {"field_not_set", "life.garbage", "fail", "in new memory: GL_VERTEX_ARRAY(32, "},
    {"state_shared", "life.two", "fail", "with a second instance in the scene: GL_VERTEX_ARRAY(32, "},
    {"clears_too_much", "block.bounds", "fail", "PLUGIN_INIT_FUNCTION, frame 0"},
    {"slot_corrected", "block.slots", "fail", "slot 1, 'radius'"},
    {"answer_not_closed", "text.bounds", "fail", "left the text of 'title' without a NUL"},
    {"text_kept", "text.moves", "fail", "used an old address of the text of 'title'"},
    {"pixels_kept", "image.moves", "fail", "the pixels of the image 'picture' after the call"},
    {"corners_not_freed", "heap.leaks", "fail",
     "left 1 block more than its second, 3072 bytes, allocated in PLUGIN_INIT_FUNCTION"},
    {"corners_each_frame", "heap.steady", "warn", "allocated in PLUGIN_NEW_GEOM"},
    {"worker_calls_host", "thread.host", "fail", "_api__set_geom_changed was called from another thread"},
    {"rounding_left", "process.state", "fail", "changed the rounding mode"},
    {"section_left_open", "events.nest", "fail", "'Draw' was still open when PLUGIN_RENDER_OPENGL returned"},
    {"end_forgotten", "gl.pass", "fail", "a glBegin was left without glEnd"},
    {"draws_in_frame", "gl.outside", "fail", "glColor4f was called outside of PLUGIN_RENDER_OPENGL"},
    {"array_on_stack", "gl.arrays", "fail",
     "GL_VERTEX_ARRAY for 32 vertices lies on the stack of a function that has returned"},
    {"divides_by_zero", "gl.values", "fail", "finite numbers"},
    {"box_upside_down", "box.finite", "fail", "each lower one at most the upper one"},
    {"answers_all", "dispatch.quiet", "fail", "answered the unknown request"},
    {"relinks", "consumer.lists", "fail", "changed the links of a particle"},
    {"never_detaches", "consumer.manners", "fail", "stays attached after PLUGIN_CLEANUP_FUNCTION"},
    {"point_not_written", "spawn.answers", "fail", "'NEWP' gave the point"},
    {"out_value_not_set", "host.lies", "fail", "used unset: _api__object_valid"},
    {"choice_as_index", "fuzz.slots", "crash", "PLUGIN_NEW_GEOM +0x"},
};

TEST(Validate, NamesEachFaultByItsCheck) {
    for (const auto& [fault, check, state, message] : kFaults) {
        SCOPED_TRACE(fault);
        const Outcome outcome = validate(faulty(fault) + " --json --only " + check);
        EXPECT_EQ(state == std::string("warn") ? 0 : 1, outcome.status);
        EXPECT_THAT(broken_checks(outcome), ElementsAre(std::string(check) + " " + state));
        EXPECT_THAT(outcome.output, HasSubstr(message));
    }
}

TEST(Validate, NamesOneFaultOnlyInAWholeRun) {
    const Outcome text = validate(faulty("clears_too_much") + " --seed 7");
    EXPECT_EQ(1, text.status);
    EXPECT_THAT(text.output,
                HasSubstr("FAIL block.bounds  PLUGIN_INIT_FUNCTION, frame 0: wrote 4 bytes at offset 72 of 72"));
    EXPECT_THAT(text.output, HasSubstr("Right: stay below pelRegisterTotalSize. "));
    EXPECT_THAT(text.output, HasSubstr("--only block.bounds --seed 7\n"));
    EXPECT_THAT(
        text.output,
        testing::EndsWith("faulty_clears_too_much.so: FAIL: 33 of 35 checks ran, 1 failed, 0 warned, 2 skipped\n"));
    EXPECT_THAT(broken_checks(validate(faulty("corners_each_frame") + " --json")), ElementsAre("heap.steady warn"));
    EXPECT_EQ(1, validate(faulty("corners_each_frame") + " --strict --only heap").status);
}

TEST(Validate, PassesCorrectPlugins) {
    for (const std::string& plugin : {faulty("none"), std::string(TOVU_SMOKE_PLUGIN), std::string(TOVU_GATHER_PLUGIN),
                                      std::string(TOVU_SPIRAL_PLUGIN), std::string(TOVU_SWIRL_PLUGIN)}) {
        const Outcome outcome = validate(plugin + " --strict");
        EXPECT_EQ(0, outcome.status) << outcome.output;
    }
}

TEST(Validate, SaysWhatCannotBeChecked) {
    EXPECT_EQ(2, validate("none.so").status);
    EXPECT_THAT(validate(faulty("none") + " --only life.cicle").output, HasSubstr("did you mean 'life.cycle'?"));
    const Outcome skipped = validate(std::string(TOVU_SPIRAL_PLUGIN) + " --only image.moves");
    EXPECT_EQ(2, skipped.status);
    EXPECT_THAT(skipped.output, HasSubstr("SKIP image.moves  it asks for no pixels.\n"));
    const Outcome foreign = validate(TOVU_PROGRAM);
    EXPECT_EQ(1, foreign.status);
    EXPECT_THAT(foreign.output, HasSubstr("SKIP life.cycle  load.init does not hold."));
}

}  // namespace
