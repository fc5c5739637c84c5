// An index of outline edges by bands of the second coordinate. An inside test visits only the edges of the point's
// band. The results are exactly those of testing every edge.
#pragma once

#include <cstdint>

#include "../memory/buffer.h"
#include "container_source.h"

namespace tovu {

/// An edge in the reference plane: `across` is x, `along` is y or z.
struct OutlineEdge {
    float a_across;
    float a_along;
    float b_across;
    float b_along;
    int32_t outline;
};

/// A band's first edge, and a gap: an interval of the first coordinate that no edge of the band reaches. All points of
/// the band in the gap are inside, or all are outside. The gap is searched for around the first points tested.
struct OutlineBand {
    int32_t first_edge;
    int8_t gap_tries;  // remaining attempts to find a gap
    bool gap_inside;
    float gap_low;
    float gap_high;
};

/// Band k holds edges[bands[k].first_edge … bands[k + 1].first_edge), outline by outline.
struct OutlineIndex {
    bool stale = true;  // the outlines were read again since the last update
    bool usable = false;
    int32_t ref_plane = 0;
    float low = 0;   // smallest second coordinate of a vertex
    float high = 0;  // largest
    float bands_per_unit = 0;
    int32_t band_count = 0;
    Buffer<OutlineBand> bands;
    Buffer<OutlineEdge> edges;
};

/// Builds the index if it is stale or of another reference plane. Returns false if every edge must be tested instead:
/// few edges, coordinates that are not finite, no memory.
bool update_index(OutlineIndex& index, const ContainerSpawnSource& source);

/// Whether the point is inside at least one outline. Requires a successful update. Stores a gap that it finds.
bool index_contains(OutlineIndex& index, float across, float along);

/// Calls visit(edge) for every edge of every outline, in order.
template <class Visit>
void for_each_edge(const ContainerSpawnSource& source, Visit visit) {
    const bool xz = source.ref_plane == 1;
    for (int32_t i = 0; i < source.outline_count; ++i) {
        const Vector3* v = source.outline_starts[i];
        const int32_t n = source.outline_sizes[i];
        for (int32_t a = 0, b = n - 1; a < n; b = a++)
            visit(OutlineEdge{v[a].x, xz ? v[a].z : v[a].y, v[b].x, xz ? v[b].z : v[b].y, i});
    }
}

}  // namespace tovu
