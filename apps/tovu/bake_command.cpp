#include "bake_command.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "stage/scenefile/shipped_files.h"

namespace tovu {

namespace {

constexpr const char* kPython = "/usr/bin/python3";

}  // namespace

stage::Error run_bake_script(std::vector<std::string> arguments) {
    const std::string script = (stage::shipped_files_folder() / "looks" / "make" / "bake.py").string();
    // -B: Python writes no compiled files beside the scripts.
    arguments.insert(arguments.begin(), {kPython, "-B", script});
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    execv(kPython, words.data());
    return stage::Error{fmt::format("bake needs {}: {}; install python3-numpy and python3-pil", kPython,
                                    std::strerror(errno))};
}

}  // namespace tovu
