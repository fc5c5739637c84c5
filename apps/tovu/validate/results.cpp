#include "results.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

namespace tovu::validate {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kJsonVersion = 1;

std::string file_name(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::vector<std::string> stack_of(const Subject& subject, const SharedOutcome& outcome) {
    std::vector<std::string> stack;
    for (int i = 0; i < outcome.frame_count; ++i) {
        const uintptr_t address = outcome.frames[i];
        if (address < outcome.library_start || address >= outcome.library_end) continue;
        const uint64_t offset = address - outcome.library_start;
        const ElfSymbol* symbol = symbol_at(subject.file, offset > 0 ? offset - 1 : 0);
        const std::string name =
            symbol ? fmt::format("{} +{:#x}", plain_name(symbol->name), offset - symbol->value) : "?";
        const std::string line = fmt::format("{} ({} +{:#x})", name, file_name(subject.path), offset);
        if (stack.empty() || stack.back() != line) stack.push_back(line);
    }
    return stack;
}

Finding make_finding(Weight weight, std::string_view where, std::string_view message, std::string_view right) {
    Finding finding{};
    finding.weight = weight;
    finding.times = 1;
    copy_text(finding.where, sizeof finding.where, where);
    copy_text(finding.message, sizeof finding.message, message);
    copy_text(finding.right, sizeof finding.right, right);
    return finding;
}

void add_ending(Result& result, const SharedOutcome& outcome, const ChildEnd& end) {
    std::string words = end.words;
    if (!end.output.empty() && outcome.ending != Ending::kDone) words += fmt::format(" (it said: {})", end.output);
    const bool in_plugin = outcome.running[0] != '\0';
    result.state = State::kCrash;
    std::string right = in_plugin ? "no entry point crashes, throws or ends the process" : "";
    if (end.took_too_long) {
        result.state = State::kTimeout;
        right = "return from every call";
    } else if (outcome.ending == Ending::kExit || outcome.ending == Ending::kNone) {
        result.state =
            outcome.ending == Ending::kExit || end.words.rfind("the process", 0) == 0 ? State::kFail : State::kCrash;
        right = "return from the call; the process is the host's";
    }
    result.findings.insert(result.findings.begin(), make_finding(Weight::kFailure, outcome.running, words, right));
}

Json json_of_result(const Result& result) {
    Json json = {{"name", result.check->name},
                 {"group", to_string(result.check->group)},
                 {"state", to_string(result.state)},
                 {"seconds", result.seconds}};
    if (!result.reason.empty()) json["reason"] = result.reason;
    json["findings"] = Json::array();
    constexpr std::array kWeights = {"note", "warning", "failure"};
    for (const Finding& finding : result.findings)
        json["findings"].push_back({{"weight", kWeights[static_cast<size_t>(finding.weight)]},
                                    {"where", finding.where},
                                    {"message", finding.message},
                                    {"right", finding.right},
                                    {"times", finding.times}});
    if (result.dropped > 0) json["findings_not_kept"] = result.dropped;
    if (!result.stack.empty()) json["stack"] = result.stack;
    return json;
}

std::string finding_text(const Finding& finding) {
    std::string text;
    if (finding.where[0] != '\0') text += fmt::format("{}: ", finding.where);
    text += finding.message;
    if (finding.times > 1) text += fmt::format(" ({} times)", finding.times);
    text += '.';
    const std::string_view right = finding.right;
    if (!right.empty()) text += fmt::format(" Right: {}{}", right, right.back() == '?' ? "" : ".");
    return text;
}

}  // namespace

const char* to_string(State state) {
    constexpr std::array kNames = {"ok", "warn", "fail", "crash", "timeout", "skip"};
    return kNames[static_cast<size_t>(state)];
}

Result result_of(const Subject& subject, const Check& check, const SharedOutcome& outcome, const ChildEnd& end,
                 double seconds) {
    Result result;
    result.check = &check;
    result.seconds = seconds;
    result.findings.assign(outcome.findings, outcome.findings + outcome.finding_count);
    result.dropped = outcome.dropped;
    std::stable_sort(result.findings.begin(), result.findings.end(),
                     [](const Finding& a, const Finding& b) { return a.weight > b.weight; });
    const auto has = [&](Weight weight) {
        return !result.findings.empty() && result.findings.front().weight == weight;
    };
    result.state = has(Weight::kFailure) ? State::kFail : has(Weight::kWarning) ? State::kWarn : State::kOk;
    if (!end.is_done) {
        result.stack = stack_of(subject, outcome);
        add_ending(result, outcome, end);
    } else if (outcome.skip_reason[0] != '\0' && result.state == State::kOk) {
        result.state = State::kSkip;
        result.reason = outcome.skip_reason;
    }
    return result;
}

bool holds(const Result& result) {
    return result.state == State::kOk || result.state == State::kWarn ||
           (result.state == State::kSkip && !result.after_failure);
}

Verdict verdict_on(const Subject& subject, const std::vector<Result>& results, bool strict) {
    Verdict verdict;
    for (const Result& result : results) {
        if (result.state == State::kSkip) ++verdict.skipped;
        if (result.state != State::kSkip) ++verdict.ran;
        if (result.state == State::kWarn) ++verdict.warned;
        if (!holds(result) && result.state != State::kSkip) ++verdict.failed;
    }
    const bool is_wrong = verdict.failed > 0 || (strict && verdict.warned > 0);
    verdict.status = verdict.ran == 0 ? 2 : is_wrong ? 1 : 0;
    verdict.line = fmt::format("{}: {}: {} of {} checks ran, {} failed, {} warned, {} skipped", file_name(subject.path),
                               verdict.status == 0   ? "PASS"
                               : verdict.status == 1 ? "FAIL"
                                                     : "NOTHING CHECKED",
                               verdict.ran, results.size(), verdict.failed, verdict.warned, verdict.skipped);
    return verdict;
}

std::string text_of(const Subject& subject, const Result& result, bool all) {
    constexpr std::array kWords = {"NOTE", "WARN", "FAIL", "CRASH", "TIMEOUT", "SKIP"};
    const std::string start = fmt::format("{} {}  ", kWords[static_cast<size_t>(result.state)], result.check->name);
    if (result.state == State::kSkip) return start + result.reason + ".\n";
    if (result.findings.empty()) return "";
    const size_t count = all ? result.findings.size() : 1;
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        text += i == 0 ? start : std::string(start.size(), ' ');
        text += finding_text(result.findings[i]);
        if (i == 0 && result.state != State::kOk) {
            if (const int64_t more = static_cast<int64_t>(result.findings.size() - count) + result.dropped; more > 0)
                text += fmt::format(" {} more finding{}.", more, more == 1 ? "" : "s");
            text += fmt::format(" Again: tovu validate {} --only {} --seed {}", subject.name, result.check->name,
                                subject.seed);
        }
        text += '\n';
    }
    for (const std::string& frame : result.stack) text += fmt::format("    at {}\n", frame);
    return text;
}

std::string json_of(const Subject& subject, const std::vector<Result>& results, const Verdict& verdict) {
    Json json = {{"version", kJsonVersion}, {"plugin", subject.name}, {"seed", subject.seed}};
    json["checks"] = Json::array();
    for (const Result& result : results) json["checks"].push_back(json_of_result(result));
    json["verdict"] = {{"status", verdict.status}, {"ran", verdict.ran},         {"failed", verdict.failed},
                       {"warned", verdict.warned}, {"skipped", verdict.skipped}, {"line", verdict.line}};
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tovu::validate
