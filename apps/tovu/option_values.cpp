#include "option_values.h"

#include <fmt/format.h>

#include "stage/scenefile/timeline.h"

namespace tovu {

stage::Result<FrameRange> parse_frames(const std::string& text, const stage::SceneDescription& scene) {
    const int count = static_cast<int>(stage::frame_count(scene));
    FrameRange range{0, count - 1};
    if (text.empty()) return range;
    const size_t dash = text.find('-');
    const std::string_view first = std::string_view(text).substr(0, dash);
    const std::string_view last = dash == std::string::npos ? first : std::string_view(text).substr(dash + 1);
    if (parse_number(first, range.first) && parse_number(last, range.last) && range.first >= 0 &&
        range.first <= range.last && range.last < count)
        return range;
    return stage::Error{fmt::format("--frames {}: must be A-B with 0 <= A <= B <= {}; the scene has {} frames", text,
                                    count - 1, count)};
}

}  // namespace tovu
