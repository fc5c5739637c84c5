// Values of options that several commands take.
#pragma once

#include <array>
#include <charconv>
#include <filesystem>
#include <string>
#include <string_view>

#include "stage/frame_range.h"
#include "stage/result.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// Reads the whole text as a number. False for any other text.
template <class T>
bool parse_number(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

/// Reads "4x3" as two whole numbers of at least 1. False for any other text.
bool parse_pair(std::string_view text, std::array<int32_t, 2>& values);

using stage::FrameRange;

/// --frames: "A-B" or "A", counted from 0; empty: all frames of the scene.
stage::Result<FrameRange> parse_frames(const std::string& text, const stage::SceneDescription& scene);

/// --chunk: "K/N" gives the K-th of N parts of `frames`, 1 <= K <= N, whose lengths differ by at most one; empty: all.
stage::Result<FrameRange> parse_chunk(const std::string& text, const FrameRange& frames);

/// Checks that a file of this name can be written in its folder. option: named in the message, with the file.
stage::Result<stage::Done> check_folder(std::string_view option, const std::filesystem::path& file);

/// Checks that `file` is not one of the files that the scene reads.
stage::Result<stage::Done> check_not_an_input(std::string_view option, const std::filesystem::path& file,
                                              const stage::SceneDescription& scene);

/// check_folder and check_not_an_input.
stage::Result<stage::Done> check_output(std::string_view option, const std::filesystem::path& file,
                                        const stage::SceneDescription& scene);

}  // namespace tovu
