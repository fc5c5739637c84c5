#include "outline_area.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "../math/random.h"
#include "outline_index.h"

namespace tovu {
namespace {

// Spans of all slices together, per edge: beyond it the outlines are so ragged that their box serves as well.
constexpr int64_t kMostSpansPerEdge = 32;
constexpr int64_t kSpansAnyway = 4096;

// Share of the box's width by which edges may stand in the wrong order at a slice's end without counting as crossed:
// neighbours that meet in a vertex do so by rounding.
constexpr float kCrossingTolerance = 1e-6f;

struct SliceEdge {
    float low;  // second coordinate of the lower end
    float high;
    float across_at_low;
    float across_at_high;
    int32_t outline;
};

/// An edge where it passes through the slice at hand.
struct Crossing {
    float at_low;
    float at_high;
    int32_t outline;
};

/// One allocation with all that the cutting needs, freed when it is done.
struct Workspace {
    void* memory = nullptr;
    SliceEdge* edges = nullptr;   // by their lower end
    float* levels = nullptr;      // the distinct ends, rising: slices lie between neighbours
    float* upper_ends = nullptr;  // of the edges, rising
    int32_t* active = nullptr;    // edges that pass through the slice at hand
    Crossing* crossings = nullptr;
    uint8_t* inside = nullptr;  // by outline: whether the sweep across the slice is inside it
    int32_t edge_count = 0;
    int32_t level_count = 0;
};

template <class T>
T* take(char*& cursor, size_t count) {
    T* block = reinterpret_cast<T*>(cursor);
    cursor += (count * sizeof(T) + 15) / 16 * 16;
    return block;
}

bool allocate(Workspace& work, const ContainerSpawnSource& source) {
    size_t edges = 0;
    for_each_edge(source, [&edges](const OutlineEdge&) { ++edges; });
    const auto outlines = static_cast<size_t>(source.outline_count);
    const size_t bytes =
        edges * (sizeof(SliceEdge) + 3 * sizeof(float) + sizeof(int32_t) + sizeof(Crossing)) + outlines;
    work.memory = std::calloc(bytes + 6 * 16, 1);
    if (work.memory == nullptr) return false;
    auto cursor = static_cast<char*>(work.memory);
    work.edges = take<SliceEdge>(cursor, edges);
    work.levels = take<float>(cursor, 2 * edges);
    work.upper_ends = take<float>(cursor, edges);
    work.active = take<int32_t>(cursor, edges);
    work.crossings = take<Crossing>(cursor, edges);
    work.inside = take<uint8_t>(cursor, outlines);
    return true;
}

void gather_edges(Workspace& work, const ContainerSpawnSource& source) {
    for_each_edge(source, [&work](const OutlineEdge& e) {
        const float sum = e.a_across + e.a_along + e.b_across + e.b_along;
        if (e.a_along == e.b_along || sum - sum != 0.0f) return;  // encloses nothing by itself
        const bool rising = e.a_along < e.b_along;
        work.edges[work.edge_count++] = rising ? SliceEdge{e.a_along, e.b_along, e.a_across, e.b_across, e.outline}
                                               : SliceEdge{e.b_along, e.a_along, e.b_across, e.a_across, e.outline};
    });
    SliceEdge* const end = work.edges + work.edge_count;
    std::sort(work.edges, end, [](const SliceEdge& a, const SliceEdge& b) { return a.low < b.low; });
    int32_t levels = 0;
    for (const SliceEdge* e = work.edges; e != end; ++e) {
        work.upper_ends[e - work.edges] = e->high;
        work.levels[levels++] = e->low;
        work.levels[levels++] = e->high;
    }
    std::sort(work.upper_ends, work.upper_ends + work.edge_count);
    std::sort(work.levels, work.levels + levels);
    work.level_count = static_cast<int32_t>(std::unique(work.levels, work.levels + levels) - work.levels);
}

// How many edges pass through all slices together, without cutting them.
int64_t count_passages(const Workspace& work) {
    int64_t passages = 0;
    int32_t begun = 0;
    int32_t ended = 0;
    for (int32_t k = 0; k + 1 < work.level_count; ++k) {
        while (begun < work.edge_count && work.edges[begun].low <= work.levels[k]) ++begun;
        while (ended < work.edge_count && work.upper_ends[ended] <= work.levels[k]) ++ended;
        passages += begun - ended;
    }
    return passages;
}

float across_at(const SliceEdge& edge, float along) {
    if (along <= edge.low) return edge.across_at_low;
    if (along >= edge.high) return edge.across_at_high;
    const float share = (along - edge.low) / (edge.high - edge.low);
    return edge.across_at_low + share * (edge.across_at_high - edge.across_at_low);
}

void add_piece(OutlineArea& area, AreaPiece piece) {
    const double mean_width =
        0.5 * (static_cast<double>(piece.right_at_low) - static_cast<double>(piece.left_at_low) +
               static_cast<double>(piece.right_at_high) - static_cast<double>(piece.left_at_high));
    const double size = mean_width * (static_cast<double>(piece.high) - static_cast<double>(piece.low));
    if (!(size > 0.0)) return;
    piece.area_before = area.total;
    area.total += size;
    area.pieces[area.count++] = piece;
}

// Edges in order across the slice; false where they cross inside it.
bool order_crossings(Crossing* crossings, int32_t count, float tolerance) {
    std::sort(crossings, crossings + count,
              [](const Crossing& a, const Crossing& b) { return a.at_low + a.at_high < b.at_low + b.at_high; });
    for (int32_t i = 0; i + 1 < count; ++i)
        if (crossings[i].at_low > crossings[i + 1].at_low + tolerance ||
            crossings[i].at_high > crossings[i + 1].at_high + tolerance)
            return false;
    return true;
}

void add_box_of(OutlineArea& area, const Crossing* crossings, int32_t count, float low, float high) {
    float left = crossings[0].at_low;
    float right = left;
    for (int32_t i = 0; i < count; ++i) {
        left = std::min({left, crossings[i].at_low, crossings[i].at_high});
        right = std::max({right, crossings[i].at_low, crossings[i].at_high});
    }
    add_piece(area, {low, high, left, right, left, right, 0});
}

// From where the sweep enters the first outline to where it leaves the last: what lies in several counts once.
void add_spans(OutlineArea& area, Workspace& work, int32_t count, float low, float high) {
    const Crossing* from = nullptr;
    int32_t inside_count = 0;
    for (int32_t i = 0; i < count; ++i) {
        const Crossing& crossing = work.crossings[i];
        uint8_t& inside = work.inside[crossing.outline];
        inside ^= 1;
        if (inside && inside_count++ == 0) from = &crossing;
        if (!inside && --inside_count == 0)
            add_piece(area, {low, high, from->at_low, crossing.at_low, from->at_high, crossing.at_high, 0});
    }
    for (int32_t i = 0; i < count; ++i) work.inside[work.crossings[i].outline] = 0;
}

void cut_slices(OutlineArea& area, Workspace& work, float tolerance) {
    int32_t begun = 0;
    int32_t active_count = 0;
    for (int32_t k = 0; k + 1 < work.level_count; ++k) {
        const float low = work.levels[k];
        const float high = work.levels[k + 1];
        int32_t kept = 0;
        for (int32_t i = 0; i < active_count; ++i)
            if (work.edges[work.active[i]].high > low) work.active[kept++] = work.active[i];
        for (; begun < work.edge_count && work.edges[begun].low <= low; ++begun) work.active[kept++] = begun;
        active_count = kept;
        for (int32_t i = 0; i < active_count; ++i) {
            const SliceEdge& edge = work.edges[work.active[i]];
            work.crossings[i] = {across_at(edge, low), across_at(edge, high), edge.outline};
        }
        if (active_count == 0) continue;
        if (order_crossings(work.crossings, active_count, tolerance))
            add_spans(area, work, active_count, low, high);
        else
            add_box_of(area, work.crossings, active_count, low, high);
    }
}

bool allocate_pieces(OutlineArea& area, int64_t count) {
    area.pieces = static_cast<AreaPiece*>(std::malloc(static_cast<size_t>(count) * sizeof(AreaPiece)));
    return area.pieces != nullptr;
}

void add_whole_box(OutlineArea& area, const ContainerSpawnSource& source) {
    const bool xz = source.ref_plane == 1;
    const float low = xz ? source.bbox_min.z : source.bbox_min.y;
    const float high = xz ? source.bbox_max.z : source.bbox_max.y;
    const float left = source.bbox_min.x;
    const float right = source.bbox_max.x;
    add_piece(area, {low, high, left, right, left, right, 0});
}

void cut(OutlineArea& area, Workspace& work, const ContainerSpawnSource& source) {
    gather_edges(work, source);
    const int64_t passages = count_passages(work);
    const bool ragged = passages > kMostSpansPerEdge * work.edge_count + kSpansAnyway;
    if (!allocate_pieces(area, ragged ? 1 : passages + 1)) return;
    if (ragged)
        add_whole_box(area, source);
    else
        cut_slices(area, work, kCrossingTolerance * (source.bbox_max.x - source.bbox_min.x));
}

}  // namespace

bool build_area(OutlineArea& area, const ContainerSpawnSource& source) {
    Workspace work;
    if (!allocate(work, source)) return false;
    cut(area, work, source);
    std::free(work.memory);
    return area.count > 0;
}

PlanePoint draw_from_area(const OutlineArea& area) {
    const double chosen = random_fraction() * area.total;
    const AreaPiece* const first = area.pieces;
    const AreaPiece* const end = first + area.count;
    const AreaPiece* behind =
        std::upper_bound(first, end, chosen, [](double at, const AreaPiece& piece) { return at < piece.area_before; });
    const AreaPiece& piece = behind == first ? *behind : behind[-1];
    const auto width_at_low = static_cast<double>(piece.right_at_low) - static_cast<double>(piece.left_at_low);
    const auto width_at_high = static_cast<double>(piece.right_at_high) - static_cast<double>(piece.left_at_high);
    // The share of the height below which a share v of the trapezoid lies: the width grows linearly, so the area does
    // as a square. Written so that equal widths need no case of their own.
    const double v = random_fraction();
    const double root = std::sqrt(width_at_low * width_at_low * (1.0 - v) + width_at_high * width_at_high * v);
    const double share = v * (width_at_low + width_at_high) / (width_at_low + root);
    const double left =
        static_cast<double>(piece.left_at_low) * (1.0 - share) + static_cast<double>(piece.left_at_high) * share;
    const double width = width_at_low * (1.0 - share) + width_at_high * share;
    const double height = static_cast<double>(piece.high) - static_cast<double>(piece.low);
    return {static_cast<float>(left + random_fraction() * width),
            static_cast<float>(static_cast<double>(piece.low) + share * height)};
}

void release(OutlineArea& area) {
    std::free(area.pieces);
    area = OutlineArea{};
}

}  // namespace tovu
