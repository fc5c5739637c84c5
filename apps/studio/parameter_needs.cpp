#include "parameter_needs.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace tovu {

namespace {

using stage::ParameterInfo;
using stage::ParameterNotes;
using stage::ParameterValue;

struct Search {
    const ParameterInfo& of;
    const NotedPlugin& noted;
    bool attached;
    IndexedValues values;  // with the changes of `needs`
    std::vector<Need> needs;
};

bool is_number(const ParameterValue& value) {
    return !std::holds_alternative<std::string>(value);
}

double number_of(const ParameterValue& value) {
    if (const auto* whole = std::get_if<int>(&value)) return *whole;
    if (const auto* number = std::get_if<double>(&value)) return *number;
    const auto* flag = std::get_if<bool>(&value);
    return flag != nullptr && *flag ? 1.0 : 0.0;
}

bool are_equal(const ParameterValue& a, const ParameterValue& b) {
    return is_number(a) && is_number(b) ? number_of(a) == number_of(b) : a == b;
}

bool is_set(const ParameterValue& value) {
    return is_number(value) ? number_of(value) != 0.0 : value != ParameterValue(std::string());
}

const ParameterValue& value_of(const Search& search, const ParameterInfo& info) {
    return search.values[static_cast<size_t>(info.index)];
}

const ParameterInfo& info_of(const Search& search, const std::string& name) {
    return *stage::find_parameter(search.noted.plugin, name);
}

bool holds(const Search& search, const stage::ValueTest& test) {
    const ParameterValue& value = value_of(search, info_of(search, test.parameter));
    if (test.set) return is_set(value);
    return std::any_of(test.values.begin(), test.values.end(),
                       [&](const ParameterValue& wanted) { return are_equal(wanted, value); });
}

// The cost of fulfilling a condition: the number of failing tests. A missing plug-in costs more than any number of
// tests, since values are easy to change, but another plug-in must be added to the scene.
int64_t lacking(const Search& search, const stage::Condition& condition) {
    constexpr int64_t kAnotherPlugin = 1000;  // more than the tests of any condition
    const int64_t failing = std::count_if(condition.tests.begin(), condition.tests.end(),
                                          [&](const stage::ValueTest& test) { return !holds(search, test); });
    return failing + (condition.attached && !search.attached ? kAnotherPlugin : 0);
}

// The condition with the lowest cost; null if there are no conditions.
const stage::Condition* nearest(const Search& search, const stage::Conditions& conditions) {
    const auto found = std::min_element(conditions.begin(), conditions.end(), [&](const auto& a, const auto& b) {
        return lacking(search, a) < lacking(search, b);
    });
    return found == conditions.end() ? nullptr : &*found;
}

std::optional<ParameterValue> beginning(const Search& search, const ParameterInfo& info) {
    const ParameterNotes* notes = stage::find_notes(search.noted.notes, info.name);
    if (notes != nullptr && notes->typical) return notes->typical;
    if (is_set(info.initial)) return info.initial;
    return std::nullopt;
}

std::string words_of(const ParameterInfo& info, const stage::ValueTest& test) {
    if (test.set) return info.label + (is_number(info.initial) ? " not 0" : " chosen");
    std::vector<std::string> values;
    for (const ParameterValue& value : test.values) {
        const auto* flag = std::get_if<bool>(&value);
        const auto* text = std::get_if<std::string>(&value);
        values.push_back(flag != nullptr ? (*flag ? "on" : "off") : text != nullptr ? *text : value_text(value));
    }
    return fmt::format("{} {}", info.label, fmt::join(values, " or "));
}

void collect(Search& search, const ParameterInfo& info);

void want(Search& search, const stage::ValueTest& test) {
    const ParameterInfo& info = info_of(search, test.parameter);
    const bool is_known =
        std::any_of(search.needs.begin(), search.needs.end(), [&](const Need& need) { return need.info == &info; });
    if (is_known || info.index == search.of.index) return;
    const std::optional<ParameterValue> value = test.set ? beginning(search, info) : test.values.front();
    search.needs.push_back({&info, value, words_of(info, test)});
    if (value) search.values[static_cast<size_t>(info.index)] = *value;
    collect(search, info);
}

void want_set(Search& search, const std::string& parameter) {
    const stage::ValueTest test{parameter, true, {}};
    if (!holds(search, test)) want(search, test);
}

// Needs a size for an image: the first pair of sizes in the notes. If no other change is needed, any pair is enough. If
// other changes turn the image on, only the first pair is, since the other pairs then hold the size of something else.
void want_extent(Search& search, const ParameterNotes& notes) {
    const auto has_extent = [&](const stage::ParameterPair& pair) {
        return is_set(value_of(search, info_of(search, pair[0]))) && is_set(value_of(search, info_of(search, pair[1])));
    };
    if (notes.covers.empty() || has_extent(notes.covers.front())) return;
    if (search.needs.empty() && std::any_of(notes.covers.begin(), notes.covers.end(), has_extent)) return;
    for (const std::string& parameter : notes.covers.front()) want_set(search, parameter);
}

void collect(Search& search, const ParameterInfo& info) {
    const ParameterNotes* notes = stage::find_notes(search.noted.notes, info.name);
    if (notes == nullptr) return;
    if (const stage::Condition* condition = nearest(search, notes->acts_when)) {
        if (condition->attached && !search.attached) search.needs.push_back({nullptr, {}, "another plug-in at work"});
        for (const stage::ValueTest& test : condition->tests)
            if (!holds(search, test)) want(search, test);
    }
    const ParameterValue& value = value_of(search, info);
    const auto* choice = std::get_if<std::string>(&value);
    const auto needed = notes->needs.find(choice != nullptr ? *choice : is_set(value) ? "true" : "false");
    if (needed != notes->needs.end()) want_set(search, needed->second);
    if (is_set(value) || &info == &search.of) want_extent(search, *notes);
}

}  // namespace

Needs needs_of(const ParameterInfo& info, const NotedPlugin& noted, IndexedValues values, bool attached) {
    Search search{info, noted, attached, std::move(values), {}};
    const ParameterNotes* notes = stage::find_notes(noted.notes, info.name);
    if (notes == nullptr) return {};
    const stage::Condition* condition = nearest(search, notes->acts_when);
    const bool is_idle = notes->idle || (condition != nullptr && lacking(search, *condition) > 0);
    collect(search, info);
    return {is_idle, std::move(search.needs)};
}

}  // namespace tovu
