// Values of options that several commands take.
#pragma once

#include <charconv>
#include <string>
#include <string_view>

#include "stage/result.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// The whole text as a number; false for anything else.
template <class T>
bool parse_number(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

struct FrameRange {
    int first = 0;
    int last = 0;  // included
};

/// --frames: "A-B" or "A", counted from 0; empty: all frames of the scene.
stage::Result<FrameRange> parse_frames(const std::string& text, const stage::SceneDescription& scene);

}  // namespace tovu
