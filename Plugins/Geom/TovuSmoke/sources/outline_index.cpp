#include "outline_index.h"

#include <cstdlib>

#include "../math/polygon.h"

namespace tovu {
namespace {

constexpr int32_t kFewestEdges = 16;  // below that, testing all is as fast
constexpr int32_t kMostBands = 4096;
constexpr int32_t kMostEntriesPerEdge = 16;  // long edges stand in many bands; coarser bands keep the index small

struct EdgeSurvey {
    int32_t count = 0;
    float low = 0;
    float high = 0;
    bool finite = true;
};

bool is_finite(float value) {
    return value - value == 0.0f;
}

EdgeSurvey survey(const ContainerSpawnSource& source) {
    EdgeSurvey result;
    for_each_edge(source, [&result](const OutlineEdge& edge) {
        if (result.count == 0) result.low = result.high = edge.a_along;
        if (edge.a_along < result.low) result.low = edge.a_along;
        if (edge.a_along > result.high) result.high = edge.a_along;
        result.finite = result.finite && is_finite(edge.a_along);
        ++result.count;
    });
    result.finite = result.finite && is_finite(result.high - result.low);
    return result;
}

// Never falls as `along` grows, so that a point between an edge's ends is in a band between theirs.
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
        if (edge.a_along != edge.b_along) entries += bands.last - bands.first + 1;
    });
    return entries;
}

template <class Entry>
bool reserve(Entry*& entries, int32_t& capacity, int64_t needed) {
    if (needed <= capacity) return true;
    if (needed > INT32_MAX) return false;
    void* grown = std::realloc(entries, static_cast<size_t>(needed) * sizeof(Entry));
    if (grown == nullptr) return false;
    entries = static_cast<Entry*>(grown);
    capacity = static_cast<int32_t>(needed);
    return true;
}

// A counting sort by band, which keeps the edges of each band in their order. Edges along the band cross no ray.
void fill_bands(OutlineIndex& index, const ContainerSpawnSource& source) {
    int32_t* starts = index.band_starts;
    for (int32_t k = 0; k <= index.band_count + 1; ++k) starts[k] = 0;
    for_each_edge(source, [&](const OutlineEdge& edge) {
        const BandRange bands = bands_of(index, edge);
        if (edge.a_along == edge.b_along) return;
        for (int32_t k = bands.first; k <= bands.last; ++k) ++starts[k + 2];
    });
    for (int32_t k = 2; k <= index.band_count + 1; ++k) starts[k] += starts[k - 1];
    for_each_edge(source, [&](const OutlineEdge& edge) {
        const BandRange bands = bands_of(index, edge);
        if (edge.a_along == edge.b_along) return;
        for (int32_t k = bands.first; k <= bands.last; ++k) index.edges[starts[k + 1]++] = edge;
    });
}

bool build(OutlineIndex& index, const ContainerSpawnSource& source) {
    const EdgeSurvey edges = survey(source);
    if (edges.count < kFewestEdges || !edges.finite || !(edges.high > edges.low)) return false;
    index.low = edges.low;
    index.high = edges.high;
    set_bands(index, edges.count < kMostBands ? edges.count : kMostBands);
    if (!is_finite(index.bands_per_unit)) return false;  // all within a range too small to divide by
    const int64_t most = static_cast<int64_t>(edges.count) * kMostEntriesPerEdge;
    int64_t entries = count_entries(index, source);
    for (; entries > most && index.band_count > 1; entries = count_entries(index, source))
        set_bands(index, index.band_count / 2);
    if (!reserve(index.band_starts, index.band_capacity, index.band_count + 2)) return false;
    if (!reserve(index.edges, index.edge_capacity, entries)) return false;
    fill_bands(index, source);
    return true;
}

}  // namespace

bool update_index(OutlineIndex& index, const ContainerSpawnSource& source) {
    if (!index.stale && index.ref_plane == source.ref_plane) return index.usable;
    index.stale = false;
    index.ref_plane = source.ref_plane;
    index.usable = build(index, source);
    return index.usable;
}

bool index_contains(const OutlineIndex& index, float across, float along) {
    if (!(along >= index.low && along < index.high)) return false;
    const int32_t band = band_at(index, along);
    const OutlineEdge* edge = index.edges + index.band_starts[band];
    const OutlineEdge* end = index.edges + index.band_starts[band + 1];
    bool inside = false;
    for (int32_t outline = -1; edge != end; ++edge) {
        if (edge->outline != outline) {
            if (inside) return true;
            outline = edge->outline;
        }
        inside ^= crosses_edge(edge->a_across, edge->a_along, edge->b_across, edge->b_along, across, along);
    }
    return inside;
}

void release(OutlineIndex& index) {
    std::free(index.band_starts);
    std::free(index.edges);
    index = OutlineIndex{};
}

}  // namespace tovu
