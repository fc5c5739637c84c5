// Tests of renders that take long: progress, errors while pictures are written.
#include <unistd.h>

#include <csignal>
#include <cstdio>
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
    write("clear.toml", "container = [{ name = 'a' }]");
    const Outcome odd = run("render clear.toml -o x.mp4 --size 31x24 --frames 0 --progress json");
    EXPECT_EQ(2, odd.status);
    EXPECT_THAT(odd.errors, testing::ContainsRegex("^[{]\"warning\":\"x.mp4: has no alpha[^\n]*\n"
                                                   "[{]\"error\":\"x.mp4: 31 x 24 pixels[^\n]*\"[}]\n$"));
}

// A limit of the file size simulates a full disk.
TEST_F(LongRender, AFullDiskIsAnErrorAndLeavesNoFile) {
    const auto files = file_count();
    for (const char* output : {"%d.png", "x.mov", "x.webm"}) {
        const Outcome full = run_shell(
            "trap '' XFSZ; ulimit -f 1; " TOVU_PROGRAM " render tiny.toml --size 320x240 -o " + std::string(output));
        EXPECT_EQ(2, full.status) << output;
        EXPECT_THAT(full.errors, testing::ContainsRegex("tovu: (0.png: cannot be written|x.(mov|webm): ffmpeg )"));
        EXPECT_EQ(files, file_count()) << output;
    }
}

constexpr const char* kLong = R"(size = [32, 24]
length = 2000
container = [{ name = "a", plugin = "smoke" }]
)";

// A render in a child process. The destructor kills it with SIGKILL.
class Background {
  public:
    Background(const fs::path& folder, const char* scene, const char* output) {
        process_ = fork();
        if (process_ != 0) return;
        if (chdir(folder.c_str()) != 0 || !std::freopen("/dev/null", "w", stderr)) _exit(99);
        execl(TOVU_PROGRAM, "tovu", "render", scene, "-o", output, nullptr);
        _exit(99);
    }
    ~Background() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    // Waits until the file exists. False if the render ends before.
    bool wait_for(const fs::path& file) const {
        while (!fs::exists(file))
            if (waitpid(process_, nullptr, WNOHANG) != 0) return false;
        return true;
    }

  private:
    pid_t process_;
};

TEST_F(LongRender, AKilledRenderResumesWithTheSameBytes) {
    write("long.toml", kLong);
    const std::string anew = "render long.toml --frames 0-24 ";
    const auto frame = [](int number) { return "a/" + std::to_string(number) + ".png"; };
    {
        const Background running(folder / "work", "long.toml", "a/%d.png");
        ASSERT_TRUE(running.wait_for(folder / "work" / frame(9)));
        const Outcome second = run(anew + "-o a/%d.png");
        EXPECT_EQ(2, second.status);
        EXPECT_THAT(second.errors, HasSubstr("-o a/%d.png: another render is writing these pictures"));
    }
    write("a/.20.png.4294967294.part", "left by a render that was killed");
    write(frame(3), bytes(frame(3)).substr(0, 200));
    write(frame(5), bytes(frame(6)).replace(60, 1, "x"));
    const Outcome resumed = run(anew + "--resume -o a/%d.png");
    ASSERT_EQ(0, resumed.status) << resumed.errors;
    EXPECT_THAT(resumed.output, testing::MatchesRegex("a/%d.png: 25 frames, [0-9]+ of them kept\n"));
    EXPECT_FALSE(fs::exists(folder / "work" / "a/.20.png.4294967294.part"));
    ASSERT_EQ(0, run(anew + "-o whole_%d.png").status);
    for (int number = 0; number <= 24; ++number)
        EXPECT_TRUE(bytes(frame(number)) == bytes("whole_" + std::to_string(number) + ".png")) << number;
}

TEST_F(LongRender, TwoRendersCannotWriteOneVideo) {
    write("long.toml", kLong);
    write(".x.mov.4294967294.part", "left by a render that was killed");
    {
        const Background running(folder / "work", "long.toml", "x.mov");
        while (fs::exists(folder / "work" / ".x.mov.4294967294.part")) usleep(1000);
        usleep(100000);
        expect_mistake("render tiny.toml -o x.mov", "-o x.mov: another render is writing this file");
    }
    EXPECT_EQ(0, run("render tiny.toml -o x.mov").status);
}

TEST_F(LongRender, PicturesRemovedDuringTheRenderAreAnError) {
    write("long.toml", kLong);
    for (const char* file : {"a/0.png", "a/row.png.json"}) {
        const Outcome outcome = run_shell("(" TOVU_PROGRAM
                                          " render long.toml --frames 0-400 -o a/%d.png & "
                                          "for i in $(seq 999); do [ ! -e a/9.png ] || break; sleep 0.01; done; rm " +
                                          std::string(file) + "; wait $!)");
        EXPECT_EQ(2, outcome.status);
        EXPECT_THAT(outcome.errors,
                    HasSubstr(std::string("tovu: ") + file + ": was removed while these pictures were rendered"));
        fs::remove_all(folder / "work" / "a");
    }
}

TEST_F(LongRender, AllChunksTogetherEqualOneRender) {
    ASSERT_EQ(0, run("render tiny.toml --bits 16 -o whole_%d.png").status);
    ASSERT_EQ(0, run("render tiny.toml -o whole.mov -o whole.mp4").status);
    for (const char* chunk : {"3/3", "1/3", "2/3"}) {
        expect_mistake("render tiny.toml -o x.mov --from part_%d.png", "--from part_%d.png: ");
        EXPECT_EQ(0, run("render tiny.toml --bits 16 -o part_%d.png --chunk " + std::string(chunk)).status);
    }
    for (int number = 0; number < 10; ++number)
        EXPECT_TRUE(bytes("part_" + std::to_string(number) + ".png") ==
                    bytes("whole_" + std::to_string(number) + ".png"));
    const Outcome joined = run("render tiny.toml -o part.mov -o part.mp4 --from part_%d.png");
    ASSERT_EQ(0, joined.status) << joined.errors;
    EXPECT_TRUE(bytes("part.mov") == bytes("whole.mov"));
    EXPECT_TRUE(bytes("part.mp4") == bytes("whole.mp4"));
    fs::remove(folder / "work" / "part_4.png");
    write("part_7.png", "");
    write("part_8.png", "");
    expect_mistake("render tiny.toml -o x.mov --from part_%d.png", "these frames are missing or incomplete: 4,7-8;");
    expect_mistake("render tiny.toml --seed 9 -o x.mov --from part_%d.png", "seed was 1 and is 9");
}

TEST_F(LongRender, RefusesToResumePicturesOfOtherContent) {
    ASSERT_EQ(0, run("render tiny.toml -o a/%d.png").status);
    write("other.toml", bytes("tiny.toml") + "# another comment\n");
    for (const char* name : {"b", "c"}) fs::create_directory(folder / "work" / name);
    write("b/0.png", "");
    write("b/row.png.json", "{}");
    write("c/0.png", bytes("a/0.png"));
    fs::create_directory(folder / "work" / "looks");
    write("looked.toml", "length = 0.1\ncontainer = [{ name = 'a', look = 'own' }]\n");
    write("looks/own.toml", "purpose = 'A plume'\nrate = 50\n[[layer]]\nname = 'puffs'\ntexture = 'puff_lit_a'\n");
    ASSERT_EQ(0, run("render looked.toml --size 8x8 -o l%d.png").status);
    write("looks/own.toml", bytes("looks/own.toml") + "# another comment\n");
    const std::pair<const char*, const char*> cases[] = {
        {"looked.toml --size 8x8 -o l%d.png", "looks was own.toml "},
        {"tiny.toml --seed 2 -o a/%d.png", "-o a/%d.png: cannot be resumed: seed was 1 and is 2"},
        {"tiny.toml --size 64x48 -o a/%d.png", "size was 32x24 and is 64x48"},
        {"tiny.toml --rate 50 -o a/%d.png", "frame rate was 25 and is 50"},
        {"tiny.toml --set smoke.sort=false -o a/%d.png", "settings was none and is smoke.sort=false"},
        {"tiny.toml --bits 16 -o a/%d.png", "bits was 8 and is 16"},
        {"other.toml -o a/%d.png", "scene was tiny.toml "},
        {"tiny.toml -o a/%02d.png", "name was %d.png and is %02d.png"},
        {"tiny.toml -o b/%d.png", "b/row.png.json: is not the manifest of numbered pictures"},
        {"tiny.toml -o c/%d.png", "the manifest c/row.png.json is missing"},
        {"tiny.toml -o x.mov", "--resume: x.mov cannot be made in parts"},
    };
    for (const auto& [arguments, message] : cases) {
        SCOPED_TRACE(arguments);
        expect_mistake("render --resume " + std::string(arguments), message);
    }
    for (const char* chunk : {"5/4", "0/2", "1/x"})
        expect_mistake("render tiny.toml -o c/%d.png --chunk " + std::string(chunk), "must be K/N with 1 <= K <= N");
    expect_mistake("render tiny.toml -o c/%d.png --chunk 1/11", "there are 10 frames; N must be from 1 to 10");
}

TEST_F(LongRender, AFarmNeedsAValidNumberOfChunksAndSlurm) {
    const std::pair<const char*, const char*> cases[] = {
        {"farm tiny.toml --chunks 11 -o x.mov",
         "--chunks 11: must be a whole number from 1 to 10, the frames to render"},
        {"farm tiny.toml --chunks 2 -o x.mov --seed a", "--seed a: must be a whole number"},
        {"farm tiny.toml --chunks 2 -o x.mov --sed 1", "--sed"},
        {"farm tiny.toml --chunks 2 -o x.png --at 0", "farm: give one -o, a video or numbered pictures"},
        {"farm --status -o x.mov", "x.mov.farm/farm.json: there is no such file"},
    };
    for (const auto& [arguments, message] : cases) expect_mistake(arguments, message);
    const auto files = file_count();
    const Outcome without = run_shell("env PATH=/nowhere " TOVU_PROGRAM " farm tiny.toml --chunks 2 -o x.mov");
    EXPECT_EQ(2, without.status);
    EXPECT_THAT(without.errors, HasSubstr("there is no sbatch command: install Slurm"));
    write("sbatch", "#!/bin/sh\necho 'sbatch: error: Unable to contact slurm controller (connect failure)'\nexit 1\n");
    fs::permissions(folder / "work" / "sbatch", fs::perms::owner_all);
    const Outcome stopped = run_shell("env PATH=.:$PATH " TOVU_PROGRAM " farm tiny.toml --chunks 2 -o x.mov");
    fs::remove(folder / "work" / "sbatch");
    EXPECT_EQ(2, stopped.status);
    EXPECT_THAT(stopped.errors, HasSubstr("start Slurm's controller, slurmctld"));
    EXPECT_EQ(files, file_count());
}

TEST_F(LongRender, TraceShowsTheTimesAndCountsOfFrames) {
    const Outcome traced = run("trace tiny.toml --frames 2-9 --json trace.json");
    ASSERT_EQ(0, traced.status) << traced.errors;
    for (const char* row : {"simulate the frame", "draw the frame", "step +smoke", "pass +smoke",
                            "section qsort +smoke", "section Sort +smoke"})
        EXPECT_THAT(traced.output,
                    testing::ContainsRegex("\n" + std::string(row) + " ( +[0-9]+\\.[0-9]{3}){4} +[2-9]\n"));
    EXPECT_THAT(traced.output, testing::ContainsRegex("\nhost calls ( +[1-9][0-9]*){4} +[2-9]\n"));
    // 4 births per frame, and no deaths within ten frames.
    EXPECT_THAT(traced.output, testing::ContainsRegex("\nparticles +smoke +24 +40 +40 +40 +9\n"));
    EXPECT_EQ(8 * 4, nlohmann::json::parse(bytes("trace.json")).at("traceEvents").size());
    expect_mistake("trace tiny.toml --json no/t.json", "--json no/t.json: there is no folder 'no'");
}

}  // namespace
