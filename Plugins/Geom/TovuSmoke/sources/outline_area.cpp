#include "outline_area.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "../math/random.h"
#include "outline_index.h"

namespace tovu {

/// An edge that is not level. While it is active it also describes the gap to its right: the space up to the next
/// active edge.
struct SweepEdge {
    float low;  // second coordinate of the lower end
    float high;
    float across_at_low;
    float across_at_high;
    double slope;  // first coordinate by second
    double since;  // second coordinate of the gap's last change
    int32_t outline;
    int32_t cover;  // number of outlines that enclose the gap
    bool inside;    // the edge's own outline encloses the gap
    bool active;    // the sweep line intersects the edge
};

/// A crossing of two neighbouring edges above the sweep line.
struct SweepCrossing {
    double along;
    int32_t left;  // edges, in their order below the crossing
    int32_t right;
};

/// Whether an outline encloses the current gap. Valid only in the update with this number.
struct SweepOutline {
    int32_t update;
    bool inside;
};

namespace {

// Limit of the crossings: kBaseCrossings + kCrossingsPerEdge per edge. Beyond it boxes cover the rest of the area.
constexpr int64_t kCrossingsPerEdge = 4;
constexpr int64_t kBaseCrossings = 16384;
constexpr int32_t kBoxes = 64;

/// The plane sweep. A level line moves up along the second coordinate; `order` lists the edges that it intersects.
/// Positions are indices into `order`, from the left.
struct Sweep {
    OutlineArea& area;
    int32_t edge_count = 0;
    int32_t* by_high = nullptr;  // edges sorted by upper end; area.edges is sorted by lower end
    int32_t* order = nullptr;    // active edges, left to right
    int32_t active_count = 0;
    int32_t begun = 0;  // edges of area.edges that have become active
    int32_t ended = 0;  // edges of by_high that are no longer active
    int32_t crossing_count = 0;
    int64_t swaps_left = 0;
    double reached = 0;  // second coordinate of the last crossing
    int32_t update = 0;
    bool no_memory = false;

    // The current level changed the positions from first_changed on, except the last `unchanged_behind` ones.
    int32_t first_changed = 0;
    int32_t unchanged_behind = 0;

    SweepEdge& at(int32_t position) { return area.edges[order[position]]; }
};

double across_at(const SweepEdge& edge, double along) {
    if (along >= static_cast<double>(edge.high)) return static_cast<double>(edge.across_at_high);
    return static_cast<double>(edge.across_at_low) + edge.slope * (along - static_cast<double>(edge.low));
}

void gather_edges(Sweep& sweep, const ContainerSpawnSource& source) {
    SweepEdge* const edges = sweep.area.edges.data();
    for_each_edge(source, [&](const OutlineEdge& e) {
        const float sum = e.a_across + e.a_along + e.b_across + e.b_along;
        if (e.a_along == e.b_along || !std::isfinite(sum)) return;  // level edges bound no area
        const bool rising = e.a_along < e.b_along;
        const float low = rising ? e.a_along : e.b_along;
        const float high = rising ? e.b_along : e.a_along;
        const float across_at_low = rising ? e.a_across : e.b_across;
        const float across_at_high = rising ? e.b_across : e.a_across;
        const double slope = (static_cast<double>(across_at_high) - static_cast<double>(across_at_low)) /
                             (static_cast<double>(high) - static_cast<double>(low));
        edges[sweep.edge_count++] = {low, high, across_at_low, across_at_high, slope, 0, e.outline, 0, false, false};
    });
    std::sort(edges, edges + sweep.edge_count, [](const SweepEdge& a, const SweepEdge& b) { return a.low < b.low; });
    for (int32_t i = 0; i < sweep.edge_count; ++i) sweep.by_high[i] = i;
    std::sort(sweep.by_high, sweep.by_high + sweep.edge_count,
              [edges](int32_t a, int32_t b) { return edges[a].high < edges[b].high; });
}

bool begin_sweep(Sweep& sweep, const ContainerSpawnSource& source) {
    OutlineArea& area = sweep.area;
    int64_t edges = 0;
    for_each_edge(source, [&edges](const OutlineEdge&) { ++edges; });
    if (!area.edges.reserve(edges) || !area.edge_lists.reserve(2 * edges) ||
        !area.outlines.reserve(source.outline_count))
        return false;
    sweep.by_high = area.edge_lists.data();
    sweep.order = area.edge_lists.data() + edges;
    sweep.swaps_left = kCrossingsPerEdge * edges + kBaseCrossings;
    for (int32_t i = 0; i < source.outline_count; ++i) area.outlines[i] = {0, false};
    gather_edges(sweep, source);
    return true;
}

// Makes room for one more entry. The size doubles, so that a shape that grows slowly rarely allocates.
template <class Entry>
bool reserve_one(Sweep& sweep, Buffer<Entry>& entries, int32_t count) {
    const bool reserved = count < entries.capacity() || entries.reserve(2 * static_cast<int64_t>(count) + 64);
    sweep.no_memory = sweep.no_memory || !reserved;
    return reserved;
}

void add_piece(Sweep& sweep, AreaPiece piece) {
    OutlineArea& area = sweep.area;
    piece.right_at_low = std::max(piece.right_at_low, piece.left_at_low);  // rounding can make the sides cross
    piece.right_at_high = std::max(piece.right_at_high, piece.left_at_high);
    const double widths = static_cast<double>(piece.right_at_low) - static_cast<double>(piece.left_at_low) +
                          static_cast<double>(piece.right_at_high) - static_cast<double>(piece.left_at_high);
    const double size = 0.5 * widths * (static_cast<double>(piece.high) - static_cast<double>(piece.low));
    if (!(size > 0.0) || !reserve_one(sweep, area.pieces, area.count)) return;
    piece.area_before = area.total;
    area.total += size;
    area.pieces[area.count++] = piece;
}

// Called before the gap to the right of a position changes. If it is enclosed, its part up to `along` becomes a piece.
void end_gap(Sweep& sweep, int32_t position, double along) {
    if (position < 0 || position >= sweep.active_count) return;
    SweepEdge& left = sweep.at(position);
    if (left.cover > 0 && left.since < along && position + 1 < sweep.active_count) {
        const SweepEdge& right = sweep.at(position + 1);
        add_piece(sweep,
                  {static_cast<float>(left.since), static_cast<float>(along),
                   static_cast<float>(across_at(left, left.since)), static_cast<float>(across_at(right, left.since)),
                   static_cast<float>(across_at(left, along)), static_cast<float>(across_at(right, along)), 0});
    }
    left.since = along;
}

bool comes_sooner(const SweepCrossing& a, const SweepCrossing& b) {
    return a.along > b.along;  // for a heap, whose front is the greatest
}

// Notes a crossing if two neighbours have the opposite order at the first of their upper ends. The order there decides,
// so no pair is swapped twice, even where rounding has them cross already.
void note_crossing(Sweep& sweep, int32_t position, double along) {
    if (position < 0 || position + 1 >= sweep.active_count) return;
    const SweepEdge& left = sweep.at(position);
    const SweepEdge& right = sweep.at(position + 1);
    const auto end = static_cast<double>(std::min(left.high, right.high));
    const double overlap_at_end = across_at(left, end) - across_at(right, end);
    if (!(overlap_at_end > 0.0)) return;
    const double room = across_at(right, along) - across_at(left, along);
    const double crossing = room > 0.0 ? along + (end - along) * (room / (room + overlap_at_end)) : along;
    OutlineArea& area = sweep.area;
    if (!reserve_one(sweep, area.crossings, sweep.crossing_count)) return;
    area.crossings[sweep.crossing_count++] = {std::min(crossing, end), sweep.order[position],
                                              sweep.order[position + 1]};
    std::push_heap(area.crossings.data(), area.crossings.data() + sweep.crossing_count, comes_sooner);
}

// Edges that touch at this level can be in any order, so the search continues on both sides of the computed position.
int32_t position_of(Sweep& sweep, int32_t edge, double along) {
    const double across = across_at(sweep.area.edges[edge], along);
    const int32_t* const first = sweep.order;
    const int32_t* const found = std::lower_bound(first, first + sweep.active_count, across, [&](int32_t e, double at) {
        return across_at(sweep.area.edges[e], along) < at;
    });
    auto behind = static_cast<int32_t>(found - first);
    for (int32_t before = behind - 1;; --before, ++behind) {
        if (behind < sweep.active_count && sweep.order[behind] == edge) return behind;
        if (before >= 0 && sweep.order[before] == edge) return before;
    }
}

void swap_neighbours(Sweep& sweep, const SweepCrossing& crossing) {
    SweepEdge& left = sweep.area.edges[crossing.left];
    SweepEdge& right = sweep.area.edges[crossing.right];
    if (!left.active || !right.active) return;
    const int32_t position = position_of(sweep, crossing.left, crossing.along);
    if (position + 1 >= sweep.active_count || sweep.order[position + 1] != crossing.right) return;
    for (int32_t p = position - 1; p <= position + 1; ++p) end_gap(sweep, p, crossing.along);
    std::swap(sweep.order[position], sweep.order[position + 1]);
    if (left.outline == right.outline) std::swap(left.inside, right.inside);
    const int32_t cover_before = position > 0 ? sweep.at(position - 1).cover : 0;
    left.cover = right.cover;
    right.cover = cover_before + (right.inside ? 1 : -1);
    note_crossing(sweep, position - 1, crossing.along);
    note_crossing(sweep, position + 1, crossing.along);
    --sweep.swaps_left;
}

void handle_crossings(Sweep& sweep, double level) {
    Buffer<SweepCrossing>& crossings = sweep.area.crossings;
    while (sweep.crossing_count > 0 && crossings[0].along <= level && sweep.swaps_left > 0) {
        std::pop_heap(crossings.data(), crossings.data() + sweep.crossing_count, comes_sooner);
        const SweepCrossing crossing = crossings[--sweep.crossing_count];
        sweep.reached = crossing.along;
        swap_neighbours(sweep, crossing);
    }
}

void note_change(Sweep& sweep, int32_t position, int32_t unchanged_behind) {
    sweep.first_changed = std::min(sweep.first_changed, position);
    sweep.unchanged_behind = std::min(sweep.unchanged_behind, unchanged_behind);
}

void remove_edge(Sweep& sweep, int32_t edge, double level) {
    const int32_t position = position_of(sweep, edge, level);
    end_gap(sweep, position - 1, level);
    end_gap(sweep, position, level);
    int32_t* const place = sweep.order + position;
    const int32_t behind = --sweep.active_count - position;
    std::memmove(place, place + 1, static_cast<size_t>(behind) * sizeof *place);
    sweep.area.edges[edge].active = false;
    note_change(sweep, position, behind);
}

void insert_edge(Sweep& sweep, int32_t edge, double level) {
    SweepEdge& inserted = sweep.area.edges[edge];
    const auto across = static_cast<double>(inserted.across_at_low);
    int32_t* const place = std::partition_point(sweep.order, sweep.order + sweep.active_count, [&](int32_t e) {
        const double other = across_at(sweep.area.edges[e], level);
        return other < across || (other == across && sweep.area.edges[e].slope < inserted.slope);
    });
    const auto position = static_cast<int32_t>(place - sweep.order);
    end_gap(sweep, position - 1, level);
    const int32_t behind = sweep.active_count++ - position;
    std::memmove(place + 1, place, static_cast<size_t>(behind) * sizeof *place);
    *place = edge;
    inserted.since = level;
    inserted.active = true;
    note_change(sweep, position, behind);
}

bool& inside_at_first_change(Sweep& sweep, int32_t outline) {
    SweepOutline& known = sweep.area.outlines[outline];
    if (known.update == sweep.update) return known.inside;
    known = {sweep.update, false};
    for (int32_t p = sweep.first_changed - 1; p >= 0; --p)
        if (sweep.at(p).outline == outline) {
            known.inside = sweep.at(p).inside;
            break;
        }
    return known.inside;
}

// Recomputes the cover of the gaps between the first and the last change at this level.
void update_gaps(Sweep& sweep, double level) {
    ++sweep.update;
    const int32_t end = sweep.active_count - sweep.unchanged_behind;
    int32_t cover = sweep.first_changed > 0 ? sweep.at(sweep.first_changed - 1).cover : 0;
    for (int32_t p = sweep.first_changed; p < end; ++p) {
        SweepEdge& edge = sweep.at(p);
        bool& inside = inside_at_first_change(sweep, edge.outline);
        inside = !inside;
        cover += inside ? 1 : -1;
        if ((cover > 0) != (edge.cover > 0)) end_gap(sweep, p, level);
        edge.cover = cover;
        edge.inside = inside;
    }
    for (int32_t p = std::max(sweep.first_changed - 1, 0); p < end; ++p)
        if (sweep.at(p).since == level) note_crossing(sweep, p, level);
}

float next_level(const Sweep& sweep) {
    const SweepEdge* const edges = sweep.area.edges.data();
    const float high = edges[sweep.by_high[sweep.ended]].high;
    return sweep.begun < sweep.edge_count ? std::min(high, edges[sweep.begun].low) : high;
}

void pass_level(Sweep& sweep, float level) {
    const SweepEdge* const edges = sweep.area.edges.data();
    const auto along = static_cast<double>(level);
    sweep.first_changed = sweep.unchanged_behind = sweep.active_count;
    for (; sweep.ended < sweep.edge_count && edges[sweep.by_high[sweep.ended]].high <= level; ++sweep.ended)
        remove_edge(sweep, sweep.by_high[sweep.ended], along);
    for (; sweep.begun < sweep.edge_count && edges[sweep.begun].low <= level; ++sweep.begun)
        insert_edge(sweep, sweep.begun, along);
    update_gaps(sweep, along);
}

void add_box(Sweep& sweep, float low, float high) {
    float left = 0;
    float right = 0;
    bool any = false;
    for (int32_t i = sweep.ended; i < sweep.edge_count; ++i) {
        const SweepEdge& edge = sweep.area.edges[sweep.by_high[i]];
        if (edge.low >= high || edge.high <= low) continue;
        const auto at_low = static_cast<float>(across_at(edge, static_cast<double>(std::max(low, edge.low))));
        const auto at_high = static_cast<float>(across_at(edge, static_cast<double>(high)));
        left = any ? std::min({left, at_low, at_high}) : std::min(at_low, at_high);
        right = any ? std::max({right, at_low, at_high}) : std::max(at_low, at_high);
        any = true;
    }
    if (any) add_piece(sweep, {low, high, left, right, left, right, 0});
}

// Covers the area above `along` with boxes.
void cover_with_boxes(Sweep& sweep, double along) {
    for (int32_t p = 0; p < sweep.active_count; ++p) end_gap(sweep, p, along);
    const auto top = static_cast<double>(sweep.area.edges[sweep.by_high[sweep.edge_count - 1]].high);
    const auto level = [&](int32_t box) { return static_cast<float>(along + (top - along) * box / kBoxes); };
    for (int32_t box = 0; box < kBoxes; ++box) add_box(sweep, level(box), level(box + 1));
}

void cut(Sweep& sweep) {
    while (sweep.ended < sweep.edge_count && !sweep.no_memory) {
        const float level = next_level(sweep);
        handle_crossings(sweep, static_cast<double>(level));
        if (sweep.swaps_left == 0) return cover_with_boxes(sweep, sweep.reached);
        pass_level(sweep, level);
    }
}

}  // namespace

bool build_area(OutlineArea& area, const ContainerSpawnSource& source) {
    area.count = 0;
    area.total = 0;
    Sweep sweep{area};
    if (!begin_sweep(sweep, source)) return false;
    cut(sweep);
    return area.total > 0.0 && !sweep.no_memory;
}

PlanePoint draw_from_area(const OutlineArea& area) {
    const double chosen = random_fraction() * area.total;
    const AreaPiece* const first = area.pieces.data();
    const AreaPiece* const end = first + area.count;
    const AreaPiece* behind =
        std::upper_bound(first, end, chosen, [](double at, const AreaPiece& piece) { return at < piece.area_before; });
    const AreaPiece& piece = behind == first ? *behind : behind[-1];
    const auto width_at_low = static_cast<double>(piece.right_at_low) - static_cast<double>(piece.left_at_low);
    const auto width_at_high = static_cast<double>(piece.right_at_high) - static_cast<double>(piece.left_at_high);
    // The share of the height below which a share v of the trapezoid's area lies. The area is quadratic in the height;
    // this form of the solution also holds for equal widths.
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

}  // namespace tovu
