#include "goals.h"

#include <optional>

#include "cases.h"

namespace bench {
namespace {

using Terms = std::vector<Term>;

Goal goal(std::string id, std::string what, Terms of, Terms over, double bound) {
    return {std::move(id), std::move(what), {{std::move(of), std::move(over)}}, bound};
}

Goal against(std::string id, std::string what, const std::string& of, const std::string& over, double bound) {
    return goal(std::move(id), std::move(what), {{of}}, {{over}}, bound);
}

void add_step_goals(std::vector<Goal>& list) {
    const std::string step = "step/smoke/25000";
    const std::string turbulent = "step/smoke_turbulent/25000";
    list.push_back(
        against("1a", "step / plain step on records in memory order", step, "step/plain_in_memory_order/25000", 0.54));
    list.push_back(against("1b", "step / plain step on the same records", step, "step/plain/25000", 0.34));
    list.push_back(
        against("1c", "step / plain step, caches cold", "step/smoke_cold/25000", "step/plain_cold/25000", 0.29));
    list.push_back(against("1d", "step / bare walk of the links", step, "floor/walk_along_links/25000", 0.43));
    list.push_back(against("2a", "step / Irrlicht's update", step, "irrlicht/update/25000", 0.29));
    list.push_back(against("2b", "step / OGRE's update", step, "ogre/update/25000", 0.063));
    list.push_back(against("2c", "step / osgParticle's update", step, "osg/update/25000", 0.2));
    list.push_back(goal("3a", "step with turbulence / (step + three rand())", {{turbulent}},
                        {{step}, {"floor/three_rands/25000"}}, 1.4));
    list.push_back(against("3b", "step with turbulence / OGRE's update with randomiser", turbulent,
                           "ogre/update_turbulent/25000", 0.35));
    list.push_back(against("3c", "step with turbulence, rand() of the Stage / of the C library",
                           "step/smoke_turbulent_stage_rand/25000", turbulent, 0.45));
}

void add_array_goals(std::vector<Goal>& list) {
    const std::string flat = "arrays_flat/smoke/25000";
    const std::string facing = "arrays_facing/smoke/25000";
    list.push_back(against("4a", "flat arrays / streaming the same bytes", flat, "floor/stream/25000", 5.78));
    list.push_back(against("4b", "flat arrays / Irrlicht's arrays", flat, "irrlicht/arrays/25000", 1.25));
    list.push_back(against("5a", "rotated facing arrays / streaming", facing, "floor/stream/25000", 6.46));
    list.push_back(against("5b", "rotated facing arrays / library sine and cosine", facing,
                           "arrays_facing/library_sine/25000", 0.5));
    list.push_back(against("5c", "rotated facing arrays / OGRE's arrays", facing, "ogre/arrays/25000", 0.12));
}

Goal sort_goal(std::string id, std::string what, const std::string& order, const std::vector<int32_t>& counts,
               double bound) {
    Goal result{std::move(id), std::move(what), {}, bound};
    for (const int32_t count : counts)
        result.ratios.push_back({{{case_name(("sort_" + order + "/smoke").c_str(), count)}},
                                 {{case_name(("sort_" + order + "/stable_sort").c_str(), count)}}});
    return result;
}

void add_sort_goals(std::vector<Goal>& list) {
    list.push_back(sort_goal("6a", "sort / std::stable_sort, 5000 and 25000", "random", {5000, 25000}, 0.13));
    list.push_back(sort_goal("6b", "sort / std::stable_sort, 1000", "random", {1000}, 0.17));
    list.push_back(sort_goal("6c", "nearly sorted, 1000 to 25000", "nearly_sorted", {1000, 5000, 25000}, 0.42));
    list.push_back(sort_goal("6d", "sorted, 1000 to 25000", "sorted", {1000, 5000, 25000}, 0.17));
    list.push_back(sort_goal("6e", "reversed, 1000 to 25000", "reversed", {1000, 5000, 25000}, 0.62));
    list.push_back(sort_goal("6f", "any count from 2", "random",
                             std::vector<int32_t>(std::begin(kSortCounts), std::end(kSortCounts)), 0.78));
}

void add_frame_goals(std::vector<Goal>& list) {
    const std::string frame = "frame/smoke/25000";
    const std::string alone = "frame/1_smoke_of_25000";
    list.push_back(against("7a", "whole frame / plain frame", frame, "frame/plain/25000", 0.56));
    list.push_back(goal("7b", "whole frame / OGRE's update, sort and arrays", {{frame}},
                        {{"ogre/update_turbulent/25000"}, {"ogre/sort/25000"}, {"ogre/arrays/25000"}}, 0.27));
    list.push_back(against("8a", "frame per particle at 25000 / at 1000", frame, "frame/smoke/1000", 1.65));
    list.push_back(against("8b", "25 × 1000 / 1 × 25000", "frame/25_smokes_of_1000", alone, 1.26));
    list.push_back(against("8c", "250 × 100 / 1 × 25000", "frame/250_smokes_of_100", alone, 1.82));
    list.push_back(goal("8d", "an idle instance's step and pass, µs", {{"frame/idle", 1e6}}, {}, 0.93));
    list.push_back(against("9a", "immediate mode, rotated / nine calls", "immediate_turned/smoke/25000",
                           "floor/nine_calls/25000", 1.66));
    list.push_back(against("9b", "immediate mode, flat / nine calls", "immediate_flat/smoke/25000",
                           "floor/nine_calls/25000", 1.64));
}

void add_source_goals(std::vector<Goal>& list) {
    list.push_back(against("10a", "Death Acceleration: 2000 vertices / a square", "step/smoke_in_blossom/25000",
                           "step/smoke_in_square/25000", 1.49));
    list.push_back(against("10b", "step with a wind image / plain step without", "step/smoke_wind_image/25000",
                           "step/plain/25000", 0.65));
    list.push_back(goal("10c", "500 births on a mask of one lit pixel, ms", {{"births/one_lit_pixel", 1e3}}, {}, 1.31));
    list.push_back(
        goal("10d", "500 births in a thousandth of an outline's box, ms", {{"births/thin_outline", 1e3}}, {}, 1.15));
    list.push_back(goal("11a", "allocations in 200 steady frames", {{"allocations/steady_frames"}}, {}, 0));
    list.push_back(goal("11b", "a frame in which the pool grows by 25000, ms", {{"frame/pool_grows", 1e3}}, {}, 0.74));
}

/// The sum of the terms in one round; empty when a case has no figure for it.
std::optional<double> sum(const Terms& terms, const Figures& figures, size_t round) {
    double result = 0;
    for (const Term& term : terms) {
        const auto found = figures.find(term.case_name);
        if (found == figures.end() || found->second.size() <= round) return std::nullopt;
        result += found->second[round] * term.factor;
    }
    return result;
}

std::vector<double> per_round(const Terms& terms, const Figures& figures) {
    std::vector<double> sums;
    while (const std::optional<double> next = sum(terms, figures, sums.size())) sums.push_back(*next);
    return sums;
}

struct Measured {
    double median;
    double of_minima;
};

std::optional<Measured> measure(const Ratio& ratio, const Figures& figures) {
    const std::vector<double> of = per_round(ratio.of, figures);
    if (of.empty()) return std::nullopt;
    if (ratio.over.empty()) return Measured{median(of), minimum(of)};
    const std::vector<double> over = per_round(ratio.over, figures);
    if (over.size() != of.size()) return std::nullopt;
    std::vector<double> ratios;
    for (size_t i = 0; i < of.size(); ++i) ratios.push_back(of[i] / over[i]);
    return Measured{median(ratios), minimum(of) / minimum(over)};
}

Outcome judge_one(const Goal& each, const Figures& figures) {
    Outcome outcome{&each, Verdict::kMet, 0, 0, {}};
    for (const Ratio& ratio : each.ratios) {
        const std::optional<Measured> measured = measure(ratio, figures);
        if (!measured) return {&each, Verdict::kNotMeasured, 0, 0, {}};
        if (&ratio != &each.ratios.front() && measured->median <= outcome.measured) continue;
        outcome.measured = measured->median;
        outcome.of_minima = measured->of_minima;
        if (each.ratios.size() > 1) outcome.worst = ratio.of.front().case_name;
    }
    if (outcome.measured > each.bound) outcome.verdict = Verdict::kMissed;
    return outcome;
}

}  // namespace

std::vector<Goal> goals() {
    std::vector<Goal> list;
    add_step_goals(list);
    add_array_goals(list);
    add_sort_goals(list);
    add_frame_goals(list);
    add_source_goals(list);
    return list;
}

std::vector<Outcome> judge(const std::vector<Goal>& list, const Figures& figures) {
    std::vector<Outcome> outcomes;
    outcomes.reserve(list.size());
    for (const Goal& each : list) outcomes.push_back(judge_one(each, figures));
    return outcomes;
}

}  // namespace bench
