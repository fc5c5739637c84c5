// Runs the command in a temporary folder with a tiny scene.
#pragma once

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "../stage/temporary_folder.h"

namespace fs = std::filesystem;

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

// A separate folder for each test, with a tiny scene. Commands run in this folder.
class Command : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(folder / "work");
        write("tiny.toml", R"(size = [32, 24]
frame_rate = 25
length = 0.4
background = "#203040"
camera = { position = [0, 20, 120] }
[[container]]
name = "smoke"
parameters = { birth_rate = 100, life_time = 0.5, sort = true, turbulence_x = 3 }
)");
    }

    void write(const std::string& name, const std::string& bytes) const { write_bytes(folder / "work" / name, bytes); }
    std::string bytes(const std::string& name) const { return file_bytes(folder / "work" / name); }

    // Runs the command from a caller that ignores SIGCHLD.
    Outcome run(const std::string& arguments) const {
        return run_shell("env --ignore-signal=CHLD " TOVU_PROGRAM " " + arguments);
    }

    Outcome run_shell(const std::string& command_line) const {
        const std::string command =
            "cd '" + (folder / "work").string() + "' && " + command_line + " >../output 2>../errors </dev/null";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, file_bytes(folder / "output"),
                file_bytes(folder / "errors")};
    }

    std::ptrdiff_t file_count() const { return std::distance(fs::recursive_directory_iterator(folder / "work"), {}); }

    // Expects status 2, a message that begins with the program's name and contains `message`, and no new file. Returns
    // the messages.
    std::string expect_mistake(const std::string& arguments, const std::string& message) const {
        const auto before = file_count();
        const Outcome outcome = run(arguments);
        EXPECT_EQ(2, outcome.status);
        EXPECT_THAT(outcome.errors, testing::ContainsRegex("(^|\n)tovu: "));
        EXPECT_THAT(outcome.errors, testing::HasSubstr(message));
        EXPECT_THAT(outcome.output, testing::IsEmpty());
        EXPECT_EQ(before, file_count());
        return outcome.errors;
    }

    const TemporaryFolder folder;
};
