#include "option_values.h"

#include <fmt/format.h>
#include <unistd.h>

#include "stage/scenefile/input_files.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

bool parse_pair(std::string_view text, std::array<int32_t, 2>& values) {
    const size_t x = text.find('x');
    return x != std::string_view::npos && parse_number(text.substr(0, x), values[0]) &&
           parse_number(text.substr(x + 1), values[1]) && values[0] >= 1 && values[1] >= 1;
}

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

stage::Result<FrameRange> parse_chunk(const std::string& text, const FrameRange& frames) {
    if (text.empty()) return frames;
    const int64_t count = frame_count(frames);
    const size_t slash = text.find('/');
    int chunk = 0;
    int chunks = 0;
    if (slash == std::string::npos || !parse_number(std::string_view(text).substr(0, slash), chunk) ||
        !parse_number(std::string_view(text).substr(slash + 1), chunks) || chunk < 1 || chunk > chunks)
        return stage::Error{fmt::format("--chunk {}: must be K/N with 1 <= K <= N, such as 2/8", text)};
    if (chunks > count)
        return stage::Error{fmt::format("--chunk {}: there are {} frames; N must be from 1 to {}", text, count, count)};
    return FrameRange{frames.first + static_cast<int>(count * (chunk - 1) / chunks),
                      frames.first + static_cast<int>(count * chunk / chunks) - 1};
}

stage::Result<stage::Done> check_folder(std::string_view option, const std::filesystem::path& file) {
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored))
        return stage::Error{fmt::format("{} {}: is a folder; name a file", option, file.string())};
    if (!std::filesystem::is_directory(folder, ignored))
        return stage::Error{fmt::format("{} {}: there is no folder '{}'", option, file.string(), folder.string())};
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        return stage::Error{
            fmt::format("{} {}: the folder '{}' cannot be written to", option, file.string(), folder.string())};
    return stage::Done{};
}

stage::Result<stage::Done> check_not_an_input(std::string_view option, const std::filesystem::path& file,
                                              const stage::SceneDescription& scene) {
    for (const std::filesystem::path& input : stage::input_files(scene)) {
        std::error_code ignored;
        if (std::filesystem::equivalent(file, input, ignored))
            return stage::Error{
                fmt::format("{} {}: the scene reads this file; choose another name", option, file.string())};
    }
    return stage::Done{};
}

stage::Result<stage::Done> check_output(std::string_view option, const std::filesystem::path& file,
                                        const stage::SceneDescription& scene) {
    if (stage::Result<stage::Done> checked = check_folder(option, file); !checked) return checked;
    return check_not_an_input(option, file, scene);
}

}  // namespace tovu
