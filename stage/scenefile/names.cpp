#include "stage/scenefile/names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "stage/plugins/parameters.h"

namespace stage {

namespace {

constexpr size_t kMostNamesListed = 12;

}  // namespace

std::string name_hint(std::string_view name, const std::vector<std::string>& known) {
    if (known.empty()) return "there are none here";
    const std::string nearest = nearest_name(name, known);
    if (!nearest.empty()) return fmt::format("did you mean '{}'?", nearest);
    const auto end = known.begin() + static_cast<std::ptrdiff_t>(std::min(known.size(), kMostNamesListed));
    return fmt::format("known are: {}{}", fmt::join(known.begin(), end, ", "), end == known.end() ? "" : ", …");
}

}  // namespace stage
