#include "whole_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>

#include "unfinished.h"

namespace stage {
namespace {

// The locks of partial files: each lasts as long as its descriptor is open.
std::mutex the_locks_mutex;
std::map<std::filesystem::path, int> the_locks;  // by the partial file's name

bool lock_whole(int file) {
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    return fcntl(file, F_OFD_SETLK, &range) == 0;
}

// Again if another process removed the file before it was locked. Returns its descriptor; -1 if it cannot be created.
int create_locked(const std::filesystem::path& partial) {
    while (true) {
        const int file = open(partial.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (file < 0) return -1;
        if (!lock_whole(file) || access(partial.c_str(), F_OK) == 0) return file;
        close(file);
    }
}

void unlock_partial(const std::filesystem::path& partial) {
    const std::lock_guard guard(the_locks_mutex);
    const auto found = the_locks.find(partial);
    if (found == the_locks.end()) return;
    close(found->second);
    the_locks.erase(found);
}

// "x.mov" of ".x.mov.1234.part"; empty for names of other files.
std::string target_of(const std::string& name) {
    constexpr std::string_view kEnding = ".part";
    if (!name.starts_with('.') || !name.ends_with(kEnding)) return {};
    const std::string inner = name.substr(1, name.size() - 1 - kEnding.size());
    const size_t dot = inner.rfind('.');
    const bool has_number = dot != std::string::npos && dot + 1 < inner.size() &&
                            inner.find_first_not_of("0123456789", dot + 1) == inner.npos;
    return has_number ? inner.substr(0, dot) : std::string();
}

}  // namespace

std::filesystem::path partial_name(const std::filesystem::path& target) {
    return target.parent_path() / fmt::format(".{}.{}.part", target.filename().string(), getpid());
}

std::filesystem::path begin_partial(const std::filesystem::path& target) {
    std::filesystem::path partial = partial_name(target);
    note_unfinished_file(partial.c_str());
    const int file = create_locked(partial);
    if (file < 0) return partial;  // the caller gets the same error when it writes to the file
    const std::lock_guard guard(the_locks_mutex);
    the_locks[partial] = file;
    return partial;
}

bool remove_abandoned(const std::filesystem::path& folder,
                      const std::function<bool(const std::string& name)>& is_wanted) {
    bool all_removed = true;
    std::error_code code;
    std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, code);
    for (; !code && entry != std::filesystem::directory_iterator(); entry.increment(code)) {
        const std::string target = target_of(entry->path().filename().string());
        if (target.empty() || !is_wanted(target)) continue;
        const int file = open(entry->path().c_str(), O_RDWR | O_CLOEXEC);
        std::error_code ignored;
        if (file >= 0 && lock_whole(file))
            std::filesystem::remove(entry->path(), ignored);
        else
            all_removed = false;
        if (file >= 0) close(file);
    }
    return all_removed;
}

Result<Done> publish_partial(const std::filesystem::path& target) {
    std::error_code code;
    std::filesystem::rename(partial_name(target), target, code);
    if (!code) {
        unlock_partial(partial_name(target));
        forget_unfinished_file(partial_name(target).c_str());
        return Done{};
    }
    discard_partial(target);
    return Error{fmt::format("{}: cannot be written: {}", target.string(), code.message())};
}

void discard_partial(const std::filesystem::path& target) noexcept {
    std::error_code ignored;
    std::filesystem::remove(partial_name(target), ignored);
    unlock_partial(partial_name(target));
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
