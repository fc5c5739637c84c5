#include "messages.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <set>

namespace stage {

std::vector<std::string> without_repeats(std::vector<std::string> lines) {
    std::set<std::string> seen;
    std::erase_if(lines, [&seen](const std::string& line) { return !seen.insert(line).second; });
    return lines;
}

Error error_of(const std::vector<std::string>& lines) {
    return Error{fmt::format("{}", fmt::join(without_repeats(lines), "\n"))};
}

}  // namespace stage
