#include "file_ending.h"

#include <algorithm>
#include <cctype>

namespace stage {

std::string file_ending(const std::filesystem::path& file) {
    std::string ending = file.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending;
}

}  // namespace stage
