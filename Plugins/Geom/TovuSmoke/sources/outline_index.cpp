#include "outline_index.h"

#include <cmath>
#include <limits>

#include "../math/polygon.h"

namespace tovu {
namespace {

constexpr int32_t kMinEdges = 16;  // with fewer edges, testing all is as fast
constexpr int32_t kMaxBands = 4096;
constexpr int8_t kGapTries = 4;
constexpr int32_t kMaxEntriesPerEdge = 16;  // a long edge is in many bands; wider bands bound the size of the index

struct EdgeSurvey {
    int32_t count = 0;
    float low = 0;
    float high = 0;
    bool finite = true;
};

EdgeSurvey survey(const ContainerSpawnSource& source) {
    EdgeSurvey result;
    for_each_edge(source, [&result](const OutlineEdge& edge) {
        if (result.count == 0) result.low = result.high = edge.a_along;
        if (edge.a_along < result.low) result.low = edge.a_along;
        if (edge.a_along > result.high) result.high = edge.a_along;
        result.finite = result.finite && std::isfinite(edge.a_along);
        ++result.count;
    });
    result.finite = result.finite && std::isfinite(result.high - result.low);
    return result;
}

// Monotonic in `along`, so a point between the ends of an edge is in a band between theirs.
int32_t band_at(const OutlineIndex& index, float along) {
    const float band = (along - index.low) * index.bands_per_unit;
    const float last = static_cast<float>(index.band_count - 1);
    return static_cast<int32_t>(band < last ? band : last);
}

struct BandRange {
    int32_t first;
    int32_t last;
};

BandRange bands_of(const OutlineIndex& index, const OutlineEdge& edge) {
    const int32_t a = band_at(index, edge.a_along);
    const int32_t b = band_at(index, edge.b_along);
    return a < b ? BandRange{a, b} : BandRange{b, a};
}

void set_bands(OutlineIndex& index, int32_t band_count) {
    index.band_count = band_count;
    index.bands_per_unit = static_cast<float>(band_count) / (index.high - index.low);
}

int64_t count_entries(const OutlineIndex& index, const ContainerSpawnSource& source) {
    int64_t entries = 0;
    for_each_edge(source, [&](const OutlineEdge& edge) {
        const BandRange bands = bands_of(index, edge);
        entries += bands.last - bands.first + 1;
    });
    return entries;
}

// A stable counting sort by band. Level edges cross no ray, but they limit gaps.
void fill_bands(OutlineIndex& index, const ContainerSpawnSource& source) {
    OutlineBand* bands = index.bands.data();
    for (int32_t k = 0; k <= index.band_count + 1; ++k) bands[k] = {0, kGapTries, false, 0, 0};
    for_each_edge(source, [&](const OutlineEdge& edge) {
        const BandRange range = bands_of(index, edge);
        for (int32_t k = range.first; k <= range.last; ++k) ++bands[k + 2].first_edge;
    });
    for (int32_t k = 2; k <= index.band_count + 1; ++k) bands[k].first_edge += bands[k - 1].first_edge;
    for_each_edge(source, [&](const OutlineEdge& edge) {
        const BandRange range = bands_of(index, edge);
        for (int32_t k = range.first; k <= range.last; ++k) index.edges[bands[k + 1].first_edge++] = edge;
    });
}

bool build(OutlineIndex& index, const ContainerSpawnSource& source) {
    const EdgeSurvey edges = survey(source);
    if (edges.count < kMinEdges || !edges.finite || !(edges.high > edges.low)) return false;
    index.low = edges.low;
    index.high = edges.high;
    set_bands(index, edges.count < kMaxBands ? edges.count : kMaxBands);
    if (!std::isfinite(index.bands_per_unit)) return false;  // the range is too small to divide by
    const int64_t max_entries = static_cast<int64_t>(edges.count) * kMaxEntriesPerEdge;
    int64_t entries = count_entries(index, source);
    for (; entries > max_entries && index.band_count > 1; entries = count_entries(index, source))
        set_bands(index, index.band_count / 2);
    if (!index.bands.reserve(index.band_count + 2)) return false;
    if (!index.edges.reserve(entries)) return false;
    fill_bands(index, source);
    return true;
}

struct EdgeRange {
    const OutlineEdge* begin;
    const OutlineEdge* end;
};

bool is_inside(EdgeRange edges, float across, float along) {
    bool inside = false;
    int32_t outline = -1;
    for (const OutlineEdge* edge = edges.begin; edge != edges.end; ++edge) {
        if (edge->outline != outline) {
            if (inside) return true;
            outline = edge->outline;
        }
        inside ^= crosses_edge(edge->a_across, edge->a_along, edge->b_across, edge->b_along, across, along);
    }
    return inside;
}

/// The range of an edge along the first coordinate, widened by more than the rounding error of `crosses_edge`.
/// Unbounded for an edge whose coordinates could overflow or underflow there.
void span_across(const OutlineEdge& edge, float& low, float& high) {
    constexpr float kHuge = 1e15f;
    constexpr float kTiny = 1e-15f;
    const float rise = std::fabs(edge.b_along - edge.a_along);
    const float size = std::fabs(edge.a_across) + std::fabs(edge.b_across);
    const bool plain = size < kHuge && (rise == 0.0f || (kTiny < rise && rise < kHuge));
    const float margin = plain ? size * 1e-5f + kTiny : std::numeric_limits<float>::infinity();
    low = (edge.a_across < edge.b_across ? edge.a_across : edge.b_across) - margin;
    high = (edge.a_across > edge.b_across ? edge.a_across : edge.b_across) + margin;
}

/// Stores the widest gap around `across`, unless an edge reaches it. Within the gap the result is constant: edges end
/// at vertices where other edges of the same outline begin, on the same side of the gap, so the number of crossings
/// changes by an even number at each vertex.
void seek_gap(OutlineBand& band, EdgeRange edges, float across, bool inside) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    --band.gap_tries;
    float gap_low = -kInfinity;
    float gap_high = kInfinity;
    for (const OutlineEdge* edge = edges.begin; edge != edges.end; ++edge) {
        float low = 0, high = 0;
        span_across(*edge, low, high);
        if (high < across)
            gap_low = high > gap_low ? high : gap_low;
        else if (low > across)
            gap_high = low < gap_high ? low : gap_high;
        else
            return;
    }
    band.gap_tries = 0;
    band.gap_low = gap_low;
    band.gap_high = gap_high;
    band.gap_inside = inside;
}

}  // namespace

bool update_index(OutlineIndex& index, const ContainerSpawnSource& source) {
    if (!index.stale && index.ref_plane == source.ref_plane) return index.usable;
    index.stale = false;
    index.ref_plane = source.ref_plane;
    index.usable = build(index, source);
    return index.usable;
}

bool index_contains(OutlineIndex& index, float across, float along) {
    if (!(along >= index.low && along < index.high)) return false;
    OutlineBand& band = index.bands[band_at(index, along)];
    if (band.gap_low < across && across < band.gap_high) return band.gap_inside;
    const EdgeRange edges{index.edges.data() + band.first_edge, index.edges.data() + (&band + 1)->first_edge};
    const bool inside = is_inside(edges, across, along);
    if (band.gap_tries > 0) seek_gap(band, edges, across, inside);
    return inside;
}

}  // namespace tovu
