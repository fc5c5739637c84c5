// The edges of a source's outlines, sorted into bands of the second coordinate, so that an inside test looks at the few
// edges whose span can hold the point. Answers are those of testing every edge, to the bit.
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

/// Where the edges of a band begin, and a gap between them: no edge of the band comes near a point whose first
/// coordinate is between its ends, so that all these points are inside together or outside together. It is found around
/// one of the first points that are tested in the band.
struct OutlineBand {
    int32_t first_edge;
    int8_t gap_tries;  // that are left
    bool gap_inside;
    float gap_low;
    float gap_high;
};

/// Band k holds edges[bands[k].first_edge … bands[k + 1].first_edge), outline by outline.
struct OutlineIndex {
    bool stale = true;  // the outlines were read anew since
    bool usable = false;
    int32_t ref_plane = 0;
    float low = 0;   // smallest second coordinate of a vertex
    float high = 0;  // largest
    float bands_per_unit = 0;
    int32_t band_count = 0;
    Buffer<OutlineBand> bands;
    Buffer<OutlineEdge> edges;
};

/// Builds the index where it is stale or of another reference plane. Returns false where testing every edge is the
/// better or the only way: few edges, coordinates that are not finite, no memory.
bool update_index(OutlineIndex& index, const ContainerSpawnSource& source);

/// Whether the point lies inside one outline at least. The index must have been updated with success; a gap that is
/// found is kept in it.
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
