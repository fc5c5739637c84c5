// Values of options that several commands take.
#pragma once

#include <array>
#include <charconv>
#include <filesystem>
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

/// "4x3" as two whole numbers of at least 1; false for anything else.
bool parse_pair(std::string_view text, std::array<int32_t, 2>& values);

struct FrameRange {
    int first = 0;
    int last = 0;  // included
};

/// --frames: "A-B" or "A", counted from 0; empty: all frames of the scene.
stage::Result<FrameRange> parse_frames(const std::string& text, const stage::SceneDescription& scene);

/// --chunk: "K/N" gives the K-th of N shares of `frames`, 1 <= K <= N, which differ by a frame at most; empty: all.
stage::Result<FrameRange> parse_chunk(const std::string& text, const FrameRange& frames);

/// Whether a file of this name can be written in its folder. option: the one that names the file, for the message.
stage::Result<stage::Done> check_folder(std::string_view option, const std::filesystem::path& file);

/// Error: `file` is one of the files that the scene is made of.
stage::Result<stage::Done> check_not_an_input(std::string_view option, const std::filesystem::path& file,
                                              const stage::SceneDescription& scene);

/// Both.
stage::Result<stage::Done> check_output(std::string_view option, const std::filesystem::path& file,
                                        const stage::SceneDescription& scene);

}  // namespace tovu
