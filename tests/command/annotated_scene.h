// Scenes whose comments state the expected messages.
#pragma once

#include <gmock/gmock.h>

#include <sstream>

/// Matchers for the expected messages of a scene, in any order. `#! COLUMN: BEGIN … PART` expects a message about this
/// column of its line that begins with BEGIN and contains PART. " … PART" is optional. A line may have several.
inline std::vector<testing::Matcher<std::string>> annotated_messages(const std::string& scene,
                                                                     const std::string& file) {
    const std::string mark = "#! ", gap = " … ";
    std::vector<testing::Matcher<std::string>> messages;
    std::istringstream lines(scene);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number)
        for (size_t at = line.find(mark), next; at != std::string::npos; at = next) {
            next = line.find(mark, at + mark.size());
            const size_t end = line.find_last_not_of(' ', next - 1) + 1;
            const std::string text = line.substr(at + mark.size(), end - at - mark.size());
            const size_t middle = std::min(text.find(gap), text.size());
            messages.push_back(
                testing::AllOf(testing::StartsWith(file + ":" + std::to_string(number) + ":" + text.substr(0, middle)),
                               testing::HasSubstr(middle < text.size() ? text.substr(middle + gap.size()) : "")));
        }
    return messages;
}

/// The lines of `output` that name a place in `file`, without the text before it.
inline std::vector<std::string> messages_about(const std::string& file, const std::string& output) {
    std::vector<std::string> messages;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);)
        if (const size_t at = line.find(file + ":"); at != std::string::npos) messages.push_back(line.substr(at));
    return messages;
}
