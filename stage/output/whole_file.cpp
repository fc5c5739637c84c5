#include "whole_file.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "unfinished.h"

namespace stage {

std::filesystem::path partial_name(const std::filesystem::path& target) {
    return target.parent_path() / fmt::format(".{}.{}.part", target.filename().string(), getpid());
}

std::filesystem::path begin_partial(const std::filesystem::path& target) {
    std::filesystem::path partial = partial_name(target);
    note_unfinished_file(partial.c_str());
    return partial;
}

Result<Done> publish_partial(const std::filesystem::path& target) {
    std::error_code code;
    std::filesystem::rename(partial_name(target), target, code);
    if (!code) {
        forget_unfinished_file(partial_name(target).c_str());
        return Done{};
    }
    discard_partial(target);
    return Error{fmt::format("{}: cannot be written: {}", target.string(), code.message())};
}

void discard_partial(const std::filesystem::path& target) noexcept {
    std::error_code ignored;
    std::filesystem::remove(partial_name(target), ignored);
    forget_unfinished_file(partial_name(target).c_str());
}

Result<Done> write_whole_file(const std::filesystem::path& target, std::string_view bytes) {
    std::ofstream file(begin_partial(target), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file) return publish_partial(target);
    const std::string reason = std::strerror(errno);
    discard_partial(target);
    return Error{fmt::format("{}: cannot be written: {}", target.string(), reason)};
}

std::string read_whole_file(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace stage
