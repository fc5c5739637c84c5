// Replay: stored recordings have no difference, and a change of a recording is found in its line.
#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <limits>

#include "../stage/temporary_folder.h"
#include "stage/plugins/frames.h"
#include "stage/plugins/instance.h"
#include "stage/replay/recorder.h"
#include "stage/replay/replay.h"
#include "stage/replay/value_text.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

Result<ReplayReport> replay(const fs::path& file) {
    const Result<CallFile> calls = read_call_file(file);
    if (!calls) return calls.error();
    return replay_calls(*calls, [](const std::string& name) {
        return Result<std::string>(fs::path(TOVU_SMOKE_PLUGIN).replace_filename(name + ".so").string());
    });
}

fs::path stored(const std::string& name) {
    return fs::path(TOVU_SOURCE_DIR) / "tests" / "replays" / (name + ".txt");
}

class Replays : public testing::TestWithParam<std::string> {};

TEST_P(Replays, HaveNoDifference) {
    const auto report = replay(stored(GetParam()));
    ASSERT_TRUE(report) << report.error().message;
    if (const auto& difference = report->difference)
        FAIL() << "line " << difference->line << ", " << difference->where << "\nrecorded: " << difference->recorded
               << "\nnow: " << difference->now;
    EXPECT_GE(report->frames, 30);
    EXPECT_GT(report->calls, 50 * report->frames);
}
INSTANTIATE_TEST_SUITE_P(All, Replays, testing::Values("exchange", "mask", "text"),
                         [](const auto& file) { return file.param; });

/// A stored recording in which the first `from` after `mark` is replaced.
struct Changed {
    Changed(const std::string& recording, const std::string& mark, const std::string& from, const std::string& to) {
        std::string text = file_bytes(stored(recording));
        const size_t at = text.find(from, text.find(mark));
        if (at == std::string::npos) throw std::runtime_error("not in " + recording + ": " + from);
        line = static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n')) + 1;
        write_bytes(file, text.replace(at, from.size(), to));
    }
    const TemporaryFolder folder;
    const fs::path file = folder / "calls.txt";
    int line;  // line of the change
};

const struct {
    const char* recording;
    const char* mark;
    const char* from;
    const char* to;
    const char* where;
    const char* recorded;  // the beginning of the recorded text and of the actual one
    const char* now;
    bool at_once;  // the difference is in the changed line
} kDifferences[] = {
    {"text", "", "\"Gravity\", 0,", "\"Gravity\", 1,", "PLUGIN_INIT of TovuSmoke",
     R"(pelRegisterParameterFloat("gravity", "Gravity", 1)", R"(pelRegisterParameterFloat("gravity", "Gravity", 0)",
     true},
    {"text", "", "\"XY\", \"XZ\"", "\"XY\"", "PLUGIN_INIT of TovuSmoke", "pelRegisterParameterRadio",
     "pelRegisterParameterRadio", true},
    {"mask", "", "seed 12", "seed 13", "frame -4, PLUGIN_NEW_GEOM(\"logo\", 0)", "_api__container_set_bounding_box",
     "_api__container_set_bounding_box", false},
    {"mask", "", "set wind_force 60", "set wind_force 61", "frame -5, PLUGIN_NEW_GEOM", "state ", "state ", false},
    {"mask", "\nframe 2\n", "() = 0.04", "() = 0.05", "frame 2, PLUGIN_NEW_GEOM", "_api__container_set_bounding_box",
     "_api__container_set_bounding_box", false},
    {"mask", "image 1 1\n", "00*256", "ff*256", "frame -4, PLUGIN_NEW_GEOM", "_api__container_set_bounding_box",
     "_api__container_set_bounding_box", false},
    {"text", "_api__geomod_get_vertex(", ", 0\n", ", 900\n", "frame 1, PLUGIN_NEW_GEOM",
     "_api__container_set_bounding_box", "_api__container_set_bounding_box", false},
    {"mask", "", "wrote return_value \"0.0", "wrote return_value \"1.0", "frame 19, PLUGIN_EXEC_ACTION(\"logo\", 2)",
     "wrote return_value \"1.0", "wrote return_value \"0.0", true},
    {"mask", "\nframe 2\n", "state ", "state x", "frame 2, PLUGIN_NEW_GEOM", "state x", "state ", true},
    {"mask", "\nframe 2\n", " _api__set_geom_changed(838860805)\n", "", "frame 2, PLUGIN_NEW_GEOM", "state ",
     "_api__set_geom_changed(838860805)", true},
    {"mask", "\nframe 2\n", " -> 1\n", " glEnd()\n -> 1\n", "frame 2, PLUGIN_NEW_GEOM", "glEnd()", "-> 1", true},
    {"mask", "", " glTexCoordPointer", " glEnd()\n glTexCoordPointer", "frame -5, PLUGIN_INIT_FUNCTION(\"logo\")",
     "glEnd()", "glTexCoordPointer(2, 5122, 0)", true},
    {"mask", " glTexCoordPointer", "\n", "\n glEnd()\n", "frame -5, PLUGIN_INIT_FUNCTION(\"logo\")", "glEnd()",
     "the call returns", false},
    {"mask", " _api__get_objectid_local(\"GEOM\"", " glTexCoordPointer(2, 5122, 0)\n", "",
     "frame -5, PLUGIN_INIT_FUNCTION(\"logo\")", "nothing more in this call", "glTexCoordPointer(2, 5122, 0)", true},
    {"mask", "\nframe 2\n", "vertices 3 x 0x1406 ", "vertices 3 x 0x1406 x", "frame 2, PLUGIN_RENDER_OPENGL",
     "glDrawArrays(7, 0, ", "glDrawArrays(7, 0, ", true},
    {"exchange", "'RAD1', ", "25000, 100, 1", "25000, 99, 1", ", PLUGIN_NEW_GEOM(\"gather\", 0)",
     "_api__geom_dispatcher(838860809, 'RAD1', 25000, 99, 1)",
     "_api__geom_dispatcher(838860809, 'RAD1', 25000, 100, 1)", true},
    {"exchange", "(\"ring\", 'NEWP')", "-> 1, ", "-> 0, ", ", PLUGIN_DISPATCHER_CALLBACK(\"ring\", 'NEWP')", "-> 0, ",
     "-> 1, ", true},
};

TEST(Replay, FindsTheFirstDifference) {
    for (const auto& row : kDifferences) {
        SCOPED_TRACE(std::string(row.recording) + ": " + row.to);
        const Changed changed(row.recording, row.mark, row.from, row.to);
        const auto report = replay(changed.file);
        ASSERT_TRUE(report) << report.error().message;
        ASSERT_TRUE(report->difference);
        EXPECT_THAT(report->difference->where, HasSubstr(row.where));
        EXPECT_THAT(report->difference->recorded, StartsWith(row.recorded));
        EXPECT_THAT(report->difference->now, StartsWith(row.now));
        EXPECT_NE(report->difference->recorded, report->difference->now);
        if (row.at_once)
            EXPECT_EQ(changed.line, report->difference->line);
        else
            EXPECT_LT(changed.line, report->difference->line);
    }
}

const struct {
    const char* recording;
    const char* mark;
    const char* from;
    const char* to;
    const char* message;
} kMistakes[] = {
    {"mask", "", "tovu-calls 1", "tovu-calls 2", "not a recording of calls: it must begin with 'tovu-calls 1'"},
    {"mask", "", "seed 12", "seed -1", "'seed' and a whole number from 0 to 4294967295 are expected here"},
    {"mask", "\nframe 39\n", "\nend", "", "the file ends here, without its last line 'end': it is incomplete"},
    {"mask", "\nframe 39\n", "end\n", "end\nend\n", "there is text after the line 'end'"},
    {"mask", "", "frame 2\n", "      frame 2\n", "the line is indented too far"},
    {"mask", "", "frame 2\n", "fram 2\n", "'fram 2' is not a line of a recording"},
    {"mask", "", "frame 2\n", "frame x\n", "'frame x' is not allowed here"},
    {"mask", "", "\"TovuSmoke\"\nframe", "\"TovuSmog\"\nframe", "'instance \"logo\" \"TovuSmog\"' is not allowed here"},
    {"mask", "", "GEOM(\"logo\"", "GEOM(\"lego\"", "PLUGIN_NEW_GEOM(\"lego\", 0) cannot be called here"},
    {"mask", "", "GEOM(\"logo\", 0)", "GEOM(\"logo\")", "'PLUGIN_NEW_GEOM(\"logo\")' is not a call of an entry point"},
    {"mask", "", "() = 0.04", "() = 0.04, 1", "'0.04, 1' is not an answer of _api__pellor_get_refreshrate"},
    {"mask", "", " = image 1", " = image 9", "'image 9' is not an answer of _api__get_image_data"},
    {"mask", "", "set wind_force 60", "set wind_forc 60", "'wind_forc 60' is not a value of a parameter of TovuSmoke"},
    {"mask", "image 1 1\n", "00*256", "0*256", "a row of this image has runs of 1 bytes, such as '00*3'"},
    {"mask", "", "image 2 1", "image 1 1", "image 1 is given twice"},
    {"mask", "", "image 1 1\n", "image 1 5\n", "an image has a number and 1 to 4 bytes per pixel"},
    {"text", "\nframe 3\n", "walk 1\n", "walk 7\n", "'walk 7': its calls are not in the file before"},
    {"exchange", "'SPWN'", "\n  = 1\n", "\n", "the answer of the request is missing"},
};

TEST(Replay, NamesTheLineOfAMistake) {
    for (const auto& row : kMistakes) {
        SCOPED_TRACE(row.to);
        const Changed changed(row.recording, row.mark, row.from, row.to);
        const auto report = replay(changed.file);
        ASSERT_FALSE(report);
        EXPECT_THAT(report.error().message, StartsWith(changed.file.string() + ":"));
        EXPECT_THAT(report.error().message, HasSubstr(row.message));
        const int line = std::atoi(report.error().message.c_str() + changed.file.string().size() + 1);
        EXPECT_LE(std::abs(line - changed.line), 1);
    }
    EXPECT_THAT(replay("none.txt").error().message, StartsWith("none.txt: cannot be read: No such file"));
}

TEST(Replay, RejectsEveryTruncatedFile) {
    const std::string text = file_bytes(stored("text"));
    const TemporaryFolder folder;
    for (const size_t size : {size_t{0}, size_t{1}, size_t{13}, text.size() / 3, text.size() / 2, text.size() - 5}) {
        write_bytes(folder / "part.txt", text.substr(0, size));
        EXPECT_FALSE(read_call_file(folder / "part.txt")) << size;
    }
}

// Unusual values and texts in answers of the Stage, slots and names.
TEST(Recording, OfUnusualValuesReplays) {
    const TemporaryFolder folder;
    std::ofstream out(folder / "calls.txt");
    const StagePtr host = make_stage();
    begin_recording(out, host->options.seed, "unusual values");
    const auto id = load_plugin(*host, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(id) << id.error().message;
    const int32_t container = add_container(*host, "a \"b\"\\ = c)\n");
    ASSERT_TRUE(add_instance(*host, container, *id, {{"spawn_image", "ü, \"\t"}, {"use_wind_image", true}}));
    host->overrides.container_get_absolute_scaling = [](int32_t, float* x, float* y, float* z) {
        *x = -0.0f;
        *y = std::numeric_limits<float>::infinity();
        *z = std::bit_cast<float>(0x7FC12345);
    };
    host->overrides.get_camera_pan = [](int32_t, float* degrees) { *degrees = std::bit_cast<float>(0xFFC00001); };
    for (int frame = 0; frame < 4; ++frame) {
        run_frame(*host);
        call_render(*host, container, 1, 0.1f);
        set_slot_bits(*host, container, 30 + frame, 0x7FC00000u + static_cast<uint32_t>(frame));
    }
    execute_action(*host, container, 2);
    notify_changed(*host, container, -7);
    remove_instances(*host);
    ASSERT_TRUE(end_recording());
    out.close();
    EXPECT_THAT(file_bytes(folder / "calls.txt"), HasSubstr(" = -0, inf, nan:7fc12345\n"));
    const auto report = replay(folder / "calls.txt");
    ASSERT_TRUE(report) << report.error().message;
    EXPECT_FALSE(report->difference) << report->difference->recorded << " / " << report->difference->now;
    EXPECT_EQ(4, report->frames);
}

TEST(ValueText, ReadsBackAsTheSameBits) {
    for (const uint32_t bits : {0u, 0x80000000u, 1u, 0x3DCCCCCDu, 0x7F7FFFFFu, 0xFF800000u, 0x7F800001u, 0xFFC54321u}) {
        float number = 0;
        EXPECT_TRUE(read_value_text(value_text(std::bit_cast<float>(bits)), number));
        EXPECT_EQ(bits, std::bit_cast<uint32_t>(number));
        const uint64_t wide_bits = uint64_t{bits} << 32 | bits;
        double wide = 0;
        EXPECT_TRUE(read_value_text(value_text(std::bit_cast<double>(wide_bits)), wide));
        EXPECT_EQ(wide_bits, std::bit_cast<uint64_t>(wide));
    }
    float number = 5;
    for (const char* wrong : {"", "x", "1x", "nan:", "nan:3f800000", "nan:7fc00000x", " 1"})
        EXPECT_FALSE(read_value_text(wrong, number)) << wrong;
    EXPECT_EQ(5, number);
}

}  // namespace
}  // namespace stage
