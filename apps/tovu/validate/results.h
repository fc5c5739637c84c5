// Results of the checks, as text and as JSON.
#pragma once

#include <string>
#include <vector>

#include "checks.h"
#include "child.h"
#include "findings.h"

namespace tovu::validate {

enum class State { kOk, kWarn, kFail, kCrash, kTimeout, kSkip };
const char* to_string(State state);

struct Result {
    const Check* check = nullptr;
    State state = State::kOk;
    std::string reason;              // why the check was skipped
    bool after_failure = false;      // skipped because another check failed; false: skipped because it does not apply
    std::vector<Finding> findings;   // worst first
    int64_t dropped = 0;             // number of findings that were not kept
    std::vector<std::string> stack;  // of a crash, a timeout or an exit: the plug-in's own functions, innermost first
    double seconds = 0;
};

/// The result of a check that ran in its own process.
Result result_of(const Subject& subject, const Check& check, const SharedOutcome& outcome, const ChildEnd& end,
                 double seconds);

/// True for ok, for a warning, and for a check that does not apply.
bool holds(const Result& result);

struct Verdict {
    int ran = 0;
    int failed = 0;
    int warned = 0;
    int skipped = 0;
    int status = 0;  // exit status: 0 all pass, 1 a check fails, 2 all were skipped
    std::string line;
};
/// strict: a warning counts as a failure.
Verdict verdict_on(const Subject& subject, const std::vector<Result>& results, bool strict);

/// The lines to print for a check; empty for a pass without findings. all: every finding instead of the first.
std::string text_of(const Subject& subject, const Result& result, bool all);

/// The whole report as JSON, with a newline at its end.
std::string json_of(const Subject& subject, const std::vector<Result>& results, const Verdict& verdict);

}  // namespace tovu::validate
