// A container source in the state after a refresh.
#pragma once

#include <vector>

#include "sources/container_source.h"

/// Owns the data of the source. Must not be copied or moved.
struct OutlineSource {
    OutlineSource(const std::vector<std::vector<Vector3>>& outlines, int32_t ref_plane) {
        for (const auto& outline : outlines) vertices.insert(vertices.end(), outline.begin(), outline.end());
        Vector3* start = vertices.data();
        for (const auto& outline : outlines) {
            sizes.push_back(static_cast<int32_t>(outline.size()));
            starts.push_back(start);
            start += outline.size();
        }
        source.ref_plane = ref_plane;
        source.outline_count = static_cast<int32_t>(outlines.size());
        source.outline_sizes = sizes.data();
        source.outline_starts = starts.data();
        source.bbox_min = source.bbox_max = vertices.at(0);
        for (const Vector3& v : vertices) {
            source.bbox_min = {std::min(source.bbox_min.x, v.x), std::min(source.bbox_min.y, v.y),
                               std::min(source.bbox_min.z, v.z)};
            source.bbox_max = {std::max(source.bbox_max.x, v.x), std::max(source.bbox_max.y, v.y),
                               std::max(source.bbox_max.z, v.z)};
        }
    }
    OutlineSource(const OutlineSource&) = delete;
    OutlineSource& operator=(const OutlineSource&) = delete;

    std::vector<Vector3> vertices;
    std::vector<int32_t> sizes;
    std::vector<Vector3*> starts;
    tovu::ContainerSpawnSource source;
};
