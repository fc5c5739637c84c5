// Rules about births: a pool that is too small, and births that a pause saves up.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

#include "linted.h"
#include "stage/scenefile/timeline.h"

namespace stage {

namespace {

constexpr double kMinBurst = 20.0;       // smallest number of births in one frame that is a surprise,
constexpr double kBurstFrames = 10.0;    // if this number of later frames has fewer births together
constexpr double kPoolTolerance = 1.02;  // random lives differ from their mean
constexpr int kSamplesPerSpan = 16;
constexpr size_t kManySpans = 100;

// A period in which the parameters of births do not change.
struct Span {
    const ParameterMoment* moment;
    double start;  // seconds, frozen time excluded
    double end;
    double rate;  // births per second
    double life_low;
    double life_high;
    double pool;
    double frozen;         // seconds of frozen time before the span
    bool uses_up = false;  // its first frame has a burst of the timeline, which uses up the saved time
    double at_once = 0.0;  // births in its first frame
    double burst = 0.0;    // part of at_once that comes from saved time
    double paused = 0.0;   // seconds saved before its first frame
};

// The number of live particles that are not older than `age`, at a birth rate of 1 per second: the integral of
// share_older from 0 to `age`.
double alive_by_age(const Span& span, double age) {
    if (age <= span.life_low) return std::max(age, 0.0);
    const double width = span.life_high - span.life_low;
    const double part = std::min(age - span.life_low, width);
    return span.life_low + (width > 0.0 ? part - part * part / (2.0 * width) : 0.0);
}

// The share of particles that live longer than `age`.
double share_older(const Span& span, double age) {
    if (age <= span.life_low) return 1.0;
    if (age >= span.life_high) return 0.0;
    return (span.life_high - age) / (span.life_high - span.life_low);
}

// Starts a new span at each burst of the timeline, since the burst uses up the saved time.
void split_at_bursts(const LintedInstance& linted, std::vector<Span>& spans) {
    const SceneDescription& scene = linted.built.description;
    for (const TimelineEntry& entry : scene.timeline) {
        if (entry.burst == 0 || entry.container != static_cast<int32_t>(linted.container)) continue;
        const double time = static_cast<double>(first_frame_from(scene, entry.time)) / scene.frame_rate;
        const auto span = std::find_if(spans.begin(), spans.end(), [&](const Span& one) {
            return one.start + one.frozen <= time && time < one.end + one.frozen;
        });
        if (span == spans.end()) continue;
        Span later = *span;
        span->end = later.start = time - span->frozen;
        later.uses_up = true;
        spans.insert(span + 1, later);
    }
}

// The plug-in saves time that does not become births; at a rate of 0 that is all time.
void find_bursts(std::vector<Span>& spans, double frame) {
    double saved = 0.0;
    for (Span& span : spans) {
        if (span.end <= span.start) continue;
        span.paused = saved;
        if (span.uses_up) {
            saved = -frame;
        } else {
            span.at_once = std::floor((saved + frame) * span.rate + 1e-6);
            span.burst = std::max(0.0, span.at_once - std::ceil(frame * span.rate));
        }
        saved += span.end - span.start;
        if (span.rate > 0.0) saved -= std::floor(saved * span.rate + 1e-6) / span.rate;
    }
}

bool is_frozen(const LintedInstance& linted, const ParameterMoment& moment) {
    return number_of(linted, moment, "frozen", 0.0) != 0.0;
}

std::vector<Span> spans_of(const LintedInstance& linted) {
    const SceneDescription& scene = linted.built.description;
    const auto seconds_of = [&scene](int64_t frame) { return static_cast<double>(frame) / scene.frame_rate; };
    const double last = seconds_of(frame_count(scene));
    std::vector<Span> spans;
    double frozen = 0.0;
    for (size_t i = 0; i < linted.moments.size(); ++i) {
        const ParameterMoment& moment = linted.moments[i];
        const double start = seconds_of(i == 0 ? -prewarm_frames(scene) : first_frame_from(scene, moment.seconds));
        const double end = i + 1 == linted.moments.size()
                               ? last
                               : std::min(last, seconds_of(first_frame_from(scene, linted.moments[i + 1].seconds)));
        if (start >= end) continue;
        if (is_frozen(linted, moment)) {
            frozen += end - start;
            continue;
        }
        const double life = number_of(linted, moment, "life", 0.0);
        const double spread = life * number_of(linted, moment, "life_spread", 0.0) / 100.0;
        spans.push_back({&moment, start - frozen, end - frozen,
                         number_of(value_of(linted, moment, linted.notes.births->rate)), life - spread, life + spread,
                         number_of(value_of(linted, moment, linted.notes.births->number)), frozen});
    }
    split_at_bursts(linted, spans);
    find_bursts(spans, 1.0 / scene.frame_rate);
    return spans;
}

double alive_at(const std::vector<Span>& spans, double time) {
    double alive = 0.0;
    for (const Span& span : spans) {
        if (span.start > time) break;
        alive +=
            span.rate * (alive_by_age(span, time - span.start) - alive_by_age(span, time - std::min(span.end, time)));
        alive += span.burst * share_older(span, time - span.start);
    }
    return alive;
}

struct Peak {
    const Span* span = nullptr;
    double time = 0.0;
    double alive = 0.0;
};

// The time at which `measure`, called with the span and the number of live particles, is largest.
template <class Measure>
Peak find_peak(const std::vector<Span>& spans, const Measure& measure) {
    Peak peak;
    double most = 0.0;
    const int samples = spans.size() < kManySpans ? kSamplesPerSpan : 1;
    for (const Span& span : spans) {
        for (int i = 0; i <= samples; ++i) {
            const double time = span.start + (span.end - span.start) * i / samples;
            const double alive = alive_at(spans, time);
            if (measure(span, alive) < most + 1e-6) continue;
            most = measure(span, alive);
            peak = {&span, time, alive};
        }
    }
    return peak;
}

// The place where the number of particles is set, or the rate if the scene sets only the rate and a look the number.
const Place& place_of_lost_births(const LintedInstance& linted, const ParameterMoment& moment) {
    const BirthNotes& births = *linted.notes.births;
    const auto is_of_look = [&](const std::string& name) {
        const ParameterSetting* setting = setting_of(linted, moment, name);
        return setting != nullptr && setting->frame_rate > 0.0;
    };
    return place_of(linted, moment,
                    is_of_look(births.number) && !is_of_look(births.rate) ? births.rate : births.number);
}

bool knows_births(const LintedInstance& linted) {
    return linted.notes.births && with_role(linted, "life") != nullptr;
}

// True if particles may die early, so that the estimate of live particles is too high.
bool die_early(const LintedInstance& linted) {
    const ParameterInfo* kept = with_role(linted, "life_kept");
    if (kept == nullptr) return false;
    const Conditions& acts_when = find_notes(linted.notes, kept->name)->acts_when;
    return std::any_of(linted.moments.begin(), linted.moments.end(), [&](const ParameterMoment& moment) {
        return value_of(linted, moment, kept->name) != kept->initial && holds(linted, moment, acts_when);
    });
}

void lint_pool(const LintedInstance& linted, const std::vector<Span>& spans, std::vector<std::string>& lines) {
    const Peak peak = find_peak(spans, [](const Span& span, double alive) { return alive - span.pool; });
    if (peak.span == nullptr || peak.alive <= peak.span->pool * kPoolTolerance) return;
    // The span with the highest rate up to the peak. At the peak itself the rate may be lower already.
    const Span& span = *std::max_element(spans.begin(), spans.end(), [&](const Span& a, const Span& b) {
        return (a.start <= peak.time ? a.rate : 0.0) < (b.start <= peak.time ? b.rate : 0.0);
    });
    const double held = peak.span->pool;
    const ParameterInfo& pool = *find_parameter(linted.plugin, linted.notes.births->number);
    const std::string rate = linted.notes.births->rate;
    std::vector<std::string> ways;
    if (peak.alive <= pool.maximum) ways.push_back(fmt::format("{} = {:.0f}", pool.name, std::ceil(peak.alive - 1e-6)));
    if (held > 0.0) ways.push_back(fmt::format("{} = {:.3g}", rate, span.rate * held / peak.alive));
    lines.push_back(fmt::format(
        "{}: births of '{}' are lost: up to {:.0f} particles would live at {:.4g} s ({} {:g} x {} {:g}), {} is {:g}; "
        "set {}, or pulses = true if births are meant to wait for deaths",
        place_of_lost_births(linted, *peak.span->moment), description_of(linted).name, peak.alive,
        peak.time + peak.span->frozen, rate, span.rate, with_role(linted, "life")->name,
        (span.life_low + span.life_high) / 2.0, pool.name, held, fmt::join(ways, " or ")));
}

// Number of births in the first `seconds` after the start of the span `first`.
double births_after(const std::vector<Span>& spans, const Span& first, double seconds) {
    double births = 0.0;
    for (const Span& span : spans) {
        const double start = std::max(span.start, first.start), end = std::min(span.end, first.start + seconds);
        if (start < end) births += span.rate * (end - start);
    }
    return births;
}

void lint_saved_births(const LintedInstance& linted, const std::vector<Span>& spans, std::vector<std::string>& lines) {
    const double frame = 1.0 / linted.built.description.frame_rate;
    const std::string& rate = linted.notes.births->rate;
    double rate_before = 0.0;
    for (const Span& span : spans) {
        const bool surprising = &span != &spans[0] && span.burst >= kMinBurst &&
                                span.burst >= births_after(spans, span, kBurstFrames * frame);
        if (surprising) {
            const double earlier = span.start + span.frozen - frame;
            lines.push_back(fmt::format(
                "{}: {} = {:g} after {:.4g} s with {:g}: the pause saves up births, {:.0f} come in one frame; to begin "
                "evenly, set {} = {:.4g} {}, so that a single birth uses up the saved time",
                place_of(linted, *span.moment, rate), rate, span.rate, span.paused, rate_before, span.at_once, rate,
                1.0 / (span.paused - frame / 2.0),
                earlier < 0.0 ? fmt::format("instead of {:g}", rate_before)
                              : fmt::format("at {:.4g} s, one frame earlier", earlier)));
        }
        rate_before = span.rate;
    }
}

}  // namespace

double most_alive(const LintedInstance& linted) {
    if (!knows_births(linted)) return 0.0;
    const std::vector<Span> spans = spans_of(linted);
    const Peak peak = find_peak(spans, [](const Span& span, double alive) { return std::min(alive, span.pool); });
    double largest_burst = 0.0;  // bursts of the timeline can exceed the pool
    for (const TimelineEntry& entry : linted.built.description.timeline)
        if (entry.container == static_cast<int32_t>(linted.container))
            largest_burst = std::max(largest_burst, static_cast<double>(entry.burst));
    return largest_burst + (peak.span == nullptr ? 0.0 : std::min(peak.alive, peak.span->pool));
}

void lint_births(const LintedInstance& linted, std::vector<std::string>& lines) {
    if (!knows_births(linted)) return;
    const std::vector<Span> spans = spans_of(linted);
    if (!description_of(linted).pulses && !die_early(linted)) lint_pool(linted, spans, lines);
    lint_saved_births(linted, spans, lines);
}

}  // namespace stage
