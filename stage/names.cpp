#include "names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <numeric>

namespace stage {

namespace {

constexpr size_t kMaxNamesListed = 12;

// Levenshtein's distance: the fewest insertions, deletions and replacements of one character.
size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

// Empty if no name is similar enough for a typing error.
std::string nearest_name(std::string_view name, const std::vector<std::string>& known) {
    std::string nearest;
    size_t least = std::max<size_t>(2, name.size() / 3) + 1;  // about one wrong character in three
    for (const std::string& candidate : known) {
        const size_t distance = edit_distance(name, candidate);
        if (distance >= least) continue;
        least = distance;
        nearest = candidate;
    }
    return nearest;
}

}  // namespace

std::string name_hint(std::string_view name, const std::vector<std::string>& known) {
    if (known.empty()) return "there are none here";
    const std::string nearest = nearest_name(name, known);
    if (!nearest.empty()) return fmt::format("did you mean '{}'?", nearest);
    const auto end = known.begin() + static_cast<std::ptrdiff_t>(std::min(known.size(), kMaxNamesListed));
    return fmt::format("known are: {}{}", fmt::join(known.begin(), end, ", "), end == known.end() ? "" : ", …");
}

}  // namespace stage
