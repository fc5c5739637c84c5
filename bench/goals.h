// What the smoke has to reach, as data.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "rounds.h"

namespace bench {

/// A case's figure times a factor.
struct Term {
    std::string case_name;
    double factor = 1;
};

/// The sum of some cases by the sum of others, round by round. Without others: the sum itself, in seconds.
struct Ratio {
    std::vector<Term> of;
    std::vector<Term> over;
};

struct Goal {
    std::string id;
    std::string what;
    std::vector<Ratio> ratios;  // the worst of them counts
    double bound = 0;
};

std::vector<Goal> goals();

enum class Verdict { Met, Missed, NotMeasured };

struct Outcome {
    const Goal* goal;
    Verdict verdict;
    double measured = 0;   // median of the per-round ratios
    double of_minima = 0;  // ratio of the fastest rounds
    std::string worst;     // the case that counts, where there are several
};

/// A goal without figures for its cases (a filter, a peer that is not there) is not measured.
std::vector<Outcome> judge(const std::vector<Goal>& goals, const Figures& figures);

}  // namespace bench
