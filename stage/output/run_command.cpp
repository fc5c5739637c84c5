#include "run_command.h"

#include <fmt/format.h>

#include <cstddef>
#include <limits>

#include "child_process.h"

namespace stage {

Result<std::string> run_command(const std::vector<std::string>& arguments) {
    constexpr size_t kQuotedLines = 5;
    Result<ChildProcess> command = ChildProcess::start(arguments, ChildProcess::Output::kKeep);
    if (!command) return command.error();
    if (const Result<Done> ended = command->wait(); !ended)
        return Error{fmt::format("{} {}:\n{}", arguments[0], ended.error().message, command->last_lines(kQuotedLines))};
    return command->last_lines(std::numeric_limits<size_t>::max());
}

}  // namespace stage
