// A range of frames.
#pragma once

#include <algorithm>
#include <vector>

namespace stage {

struct FrameRange {
    int first = 0;
    int last = 0;  // included
};

inline int frame_count(const FrameRange& range) {
    return range.last - range.first + 1;
}

inline bool contains(const FrameRange& range, int frame) {
    return frame >= range.first && frame <= range.last;
}

inline bool contains(const std::vector<FrameRange>& ranges, int frame) {
    return std::ranges::any_of(ranges, [frame](const FrameRange& range) { return contains(range, frame); });
}

}  // namespace stage
