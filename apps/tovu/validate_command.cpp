#include "validate_command.h"

#include <fmt/format.h>

#include <charconv>
#include <chrono>
#include <filesystem>
#include <set>

#include "plugin_location.h"
#include "stage/names.h"
#include "stage/scenefile/plugin_file.h"
#include "validate/checks.h"
#include "validate/child.h"
#include "validate/heap_watch.h"
#include "validate/results.h"
#include "validate/watch.h"

namespace tovu {

namespace {

using stage::Error;
using validate::Check;
using validate::Subject;

std::string list_text() {
    std::string text;
    for (const Check& check : validate::all_checks()) text += fmt::format("{:<18}{}\n", check.name, check.does);
    return text;
}

bool is_meant(const Check& check, const std::string& name) {
    return name == check.name || name == to_string(check.group) ||
           std::string_view(check.name).substr(0, name.size() + 1) == name + '.';
}

stage::Result<std::set<const Check*>> wanted_checks(const std::vector<std::string>& only) {
    std::set<const Check*> wanted;
    for (const std::string& name : only) {
        const size_t before = wanted.size();
        for (const Check& check : validate::all_checks())
            if (is_meant(check, name)) wanted.insert(&check);
        if (wanted.size() > before) continue;
        std::vector<std::string> known;
        for (const Check& check : validate::all_checks()) known.push_back(check.name);
        return Error{fmt::format("--only {}: there is no check of this name: {}", name, stage::name_hint(name, known))};
    }
    return wanted;
}

stage::Result<Subject> open_subject(const ValidateOptions& options) {
    Subject subject;
    std::error_code ignored;
    subject.name = options.plugin;
    if (!std::filesystem::is_regular_file(subject.name, ignored)) {
        const auto file = stage::find_plugin_file(options.plugin, smoke_plugin_file(), {});
        if (!file) return file.error();
        subject.name = *file;
    }
    if (!std::filesystem::is_regular_file(subject.name, ignored))
        return Error{fmt::format("{}: there is no file of this name", subject.name)};
    subject.path = std::filesystem::absolute(subject.name).string();
    const char* end = options.seed.data() + options.seed.size();
    const auto parsed = std::from_chars(options.seed.data(), end, subject.seed);
    if (parsed.ec != std::errc() || parsed.ptr != end)
        return Error{fmt::format("--seed {}: must be a whole number from 0 to 4294967295", options.seed)};
    if (!(options.timeout_seconds > 0 && options.timeout_seconds <= 86400))
        return Error{fmt::format("--timeout {}: must be a number of seconds above 0 and at most 86400",
                                 options.timeout_seconds)};
    if (validate::wrong_format(subject.path).empty()) subject.file = std::move(*validate::read_elf(subject.path));
    return subject;
}

validate::Result run_check(const Subject& subject, const Check& check, const ValidateOptions& options) {
    const auto start = std::chrono::steady_clock::now();
    validate::SharedOutcome& outcome = *validate::make_shared_outcome();
    const auto work = [&] {
        validate::begin_watch(check.name, outcome, subject.file);
        // The watched heap survives heap errors of the plug-in, which are the subject of other checks.
        if (validate::heap_can_be_watched()) validate::watch_heap({});
        check.run(subject);
    };
    validate::ChildEnd end;
    if (options.in_process) {
        work();
        end.is_done = true;
    } else {
        end = validate::run_in_child(outcome, options.timeout_seconds, work, check.ends_by_exit);
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    return validate::result_of(subject, check, outcome, end, seconds.count());
}

/// The first check that `check` depends on and that failed; null if all pass.
const Check* failed_before(const Check& check, const std::vector<validate::Result>& results) {
    for (const char* name : check.after)
        for (const validate::Result& result : results)
            if (std::string_view(result.check->name) == name && !validate::holds(result)) return result.check;
    return nullptr;
}

/// The place in the plug-in's code where the process ended: of a crash, or the function of an endless loop.
std::string place_of_end(const validate::Result& result) {
    if (result.stack.empty()) return "";
    const std::string& innermost = result.stack.front();
    return result.state == validate::State::kTimeout ? innermost.substr(0, innermost.find(" +0x")) : innermost;
}

// Searches `before` for a check that crashed or hung at the same place in the plug-in. Null if there is none.
const Check* same_end(const validate::Result& result, const std::vector<validate::Result>& before) {
    for (const validate::Result& other : before)
        if (!result.stack.empty() && result.state == other.state && place_of_end(result) == place_of_end(other))
            return other.check;
    return nullptr;
}

validate::Result skipped(const Check& check, const std::string& reason) {
    validate::Result result;
    result.check = &check;
    result.state = validate::State::kSkip;
    result.reason = reason;
    result.after_failure = true;
    return result;
}

/// The wanted checks and all checks that they depend on.
std::set<const Check*> with_dependencies(std::set<const Check*> wanted) {
    const auto checks = validate::all_checks();
    for (auto check = checks.rbegin(); check != checks.rend(); ++check)
        if (wanted.count(&*check) > 0)
            for (const char* name : check->after)
                for (const Check& other : checks)
                    if (std::string_view(other.name) == name) wanted.insert(&other);
    return wanted;
}

}  // namespace

stage::Result<int> validate_plugin(const ValidateOptions& options,
                                   const std::function<void(const std::string&)>& print) {
    if (options.list) {
        print(list_text());
        return 0;
    }
    const auto wanted = wanted_checks(options.only);
    if (!wanted) return wanted.error();
    const auto subject = open_subject(options);
    if (!subject) return subject.error();
    // In one process the checks affect each other, so only the wanted ones run.
    const std::set<const Check*> to_run = options.in_process ? *wanted : with_dependencies(*wanted);
    std::vector<validate::Result> ran;
    std::vector<validate::Result> shown;
    for (const Check& check : validate::all_checks()) {
        if (!to_run.empty() && to_run.count(&check) == 0) continue;
        const Check* failed = failed_before(check, ran);
        validate::Result result = failed ? skipped(check, fmt::format("{} does not hold", failed->name))
                                         : run_check(*subject, check, options);
        if (const Check* same = same_end(result, ran))
            result = skipped(check, fmt::format("it ends in the same place as {}", same->name));
        ran.push_back(result);
        const bool is_asked_for = wanted->empty() || wanted->count(&check) > 0;
        // A dependency that was not asked for is only shown if it fails, since a wanted check is then skipped.
        if (!is_asked_for && (validate::holds(result) || result.state == validate::State::kSkip)) continue;
        shown.push_back(result);
        if (!options.json) print(validate::text_of(*subject, result, is_asked_for && !wanted->empty()));
    }
    const validate::Verdict verdict = validate::verdict_on(*subject, shown, options.strict);
    print(options.json ? validate::json_of(*subject, shown, verdict) : verdict.line + "\n");
    return verdict.status;
}

}  // namespace tovu
