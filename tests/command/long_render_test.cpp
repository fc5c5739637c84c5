// Tests of renders that take long: progress, errors while pictures are written.
#include <nlohmann/json.hpp>
#include <sstream>

#include "command_fixture.h"

namespace {

using testing::HasSubstr;
using LongRender = Command;

TEST_F(LongRender, ProgressIsJsonForPrograms) {
    const Outcome outcome = run("render tiny.toml -o %d.png --progress json --report");
    ASSERT_EQ(0, outcome.status) << outcome.errors;
    EXPECT_THAT(outcome.output, testing::ContainsRegex("\ndraw +[0-9.]+ +[0-9.]+ +[0-9]+ %\n"));
    std::istringstream lines(outcome.errors);
    nlohmann::json last;
    for (std::string line; std::getline(lines, line);) last = nlohmann::json::parse(line);
    EXPECT_EQ(10, last["frame"]);
    EXPECT_EQ(10, last["frames"]);
    EXPECT_EQ(0, last["seconds_left"]);
    EXPECT_GT(last["seconds"], 0);
}

// The limit of a file's size stands for a full disk.
TEST_F(LongRender, AFullDiskEndsItAndLeavesNoFile) {
    const auto files = file_count();
    for (const char* output : {"%d.png", "x.mov", "x.webm"}) {
        const Outcome full = run_shell(
            "trap '' XFSZ; ulimit -f 1; " TOVU_PROGRAM " render tiny.toml --size 320x240 -o " + std::string(output));
        EXPECT_EQ(2, full.status) << output;
        EXPECT_THAT(full.errors, testing::ContainsRegex("tovu: (0.png: cannot be written|x.(mov|webm): ffmpeg )"));
        EXPECT_EQ(files, file_count()) << output;
    }
}

TEST_F(LongRender, TraceTellsTheTimesAndCountsOfFrames) {
    const Outcome traced = run("trace tiny.toml --frames 2-9 --json trace.json");
    ASSERT_EQ(0, traced.status) << traced.errors;
    for (const char* row : {"simulate the frame", "draw the frame", "step +smoke", "pass +smoke",
                            "section qsort +smoke", "section Sort +smoke"})
        EXPECT_THAT(traced.output,
                    testing::ContainsRegex("\n" + std::string(row) + " ( +[0-9]+\\.[0-9]{3}){4} +[2-9]\n"));
    EXPECT_THAT(traced.output, testing::ContainsRegex("\nhost calls ( +[1-9][0-9]*){4} +[2-9]\n"));
    // 4 births a frame, of which none dies within ten frames.
    EXPECT_THAT(traced.output, testing::ContainsRegex("\nparticles +smoke +24 +40 +40 +40 +9\n"));
    EXPECT_EQ(8 * 4, nlohmann::json::parse(bytes("trace.json")).at("traceEvents").size());
    expect_mistake("trace tiny.toml --json no/t.json", "--json no/t.json: there is no folder 'no'");
}

}  // namespace
