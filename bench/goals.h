// The performance goals, as data.
#pragma once

#include <string>
#include <vector>

#include "rounds.h"

namespace bench {

/// A case's figure times a factor.
struct Term {
    std::string case_name;
    double factor = 1;
};

/// The sum of some cases divided by the sum of others, round by round. With empty `over`: the sum itself, in seconds.
struct Ratio {
    std::vector<Term> of;
    std::vector<Term> over;
};

struct Goal {
    std::string id;
    std::string what;
    std::vector<Ratio> ratios;  // the largest of them counts
    double bound = 0;
};

std::vector<Goal> goals();

enum class Verdict { kMet, kMissed, kNotMeasured };

struct Outcome {
    const Goal* goal;
    Verdict verdict;
    double measured = 0;   // median of the per-round ratios
    double of_minima = 0;  // ratio of the fastest rounds
    std::string worst;     // the case with the largest ratio, if the goal has several
};

/// A goal is not measured when one of its cases has no figures (a filter, an engine that is not installed).
std::vector<Outcome> judge(const std::vector<Goal>& goals, const Figures& figures);

}  // namespace bench
