#include "picture_sequence.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>

#include "exr_file.h"
#include "frame_names.h"
#include "stage/file_ending.h"
#include "whole_file.h"

namespace stage {
namespace {

using Json = nlohmann::ordered_json;

// A lock on byte N of the manifest is a lock on frame N, and kTextByte locks the text. Locks may lie past the end of
// the file.
constexpr off_t kTextByte = off_t{1} << 40;

bool lock_bytes(int file, short kind, off_t first, off_t count, bool wait = false) {
    struct flock range {};
    range.l_type = kind;
    range.l_whence = SEEK_SET;
    range.l_start = first;
    range.l_len = count;
    int result = 0;
    do {
        result = fcntl(file, wait ? F_OFD_SETLKW : F_OFD_SETLK, &range);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool lock_all_frames(int file) {
    return lock_bytes(file, F_WRLCK, 0, kTextByte);
}

void unlock_outside(int file, FrameRange range) {
    if (range.first > 0) lock_bytes(file, F_UNLCK, 0, range.first);
    lock_bytes(file, F_UNLCK, range.last + 1, kTextByte - range.last - 1);
}

/// True if the open file still has this name.
bool is_at(int file, const std::filesystem::path& name) {
    struct stat open {};
    struct stat named {};
    return fstat(file, &open) == 0 && stat(name.c_str(), &named) == 0 && open.st_ino == named.st_ino &&
           open.st_dev == named.st_dev;
}

std::string text_of(const SequenceManifest& manifest) {
    Json content = Json::object();
    for (const auto& [name, value] : manifest.content) content[name] = value;
    Json ranges = Json::array();
    for (const FrameRange& range : manifest.ranges) ranges.push_back({range.first, range.last});
    const Json json = {{"made_of", std::move(content)}, {"frames", std::move(ranges)}};
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// Throws Json::exception for a malformed manifest.
SequenceManifest parse_manifest(const std::string& text) {
    const Json json = Json::parse(text);
    SequenceManifest manifest;
    for (const auto& [name, value] : json.at("made_of").items())
        manifest.content.emplace_back(name, value.get<std::string>());
    for (const Json& range : json.at("frames"))
        manifest.ranges.push_back({range.at(0).get<int>(), range.at(1).get<int>()});
    return manifest;
}

Result<SequenceManifest> manifest_of(const std::filesystem::path& name, const std::string& text) {
    try {
        return parse_manifest(text);
    } catch (const Json::exception&) {
        return Error{name.string() + ": is not the manifest of numbered pictures; render them again"};
    }
}

bool write_text(int file, const std::string& text) {
    return pwrite(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()) &&
           ftruncate(file, static_cast<off_t>(text.size())) == 0;
}

/// Merges `added` with the ranges that it overlaps or touches.
void add_range(std::vector<FrameRange>& ranges, FrameRange added) {
    std::vector<FrameRange> merged;
    for (const FrameRange& range : ranges) {
        if (range.last + 1 < added.first || added.last + 1 < range.first) {
            merged.push_back(range);
        } else {
            added = {std::min(added.first, range.first), std::max(added.last, range.last)};
        }
    }
    merged.push_back(added);
    std::ranges::sort(merged, {}, &FrameRange::first);
    ranges = std::move(merged);
}

/// Removes the pictures of `range`, except those in the ranges `kept`.
void remove_pictures(const std::string& pattern, FrameRange range, const std::vector<FrameRange>& kept) {
    const Result<NumberedFiles> files = existing_frames(pattern);
    if (!files) return;
    std::error_code ignored;
    for (const auto& [frame, file] : *files)
        if (contains(range, frame) && !contains(kept, frame)) std::filesystem::remove(file, ignored);
}

/// Removes the partial files that killed renders left for these frames.
void remove_abandoned_frames(const std::string& pattern, FrameRange range) {
    remove_abandoned(frame_name(pattern, 0)->parent_path(),
                     [&](const std::string& name) { return contains(range, frame_number(pattern, name)); });
}

Error written_by_another(const std::string& pattern) {
    return Error{pattern + ": another render is writing these pictures; wait for its end or choose another name"};
}

/// The manifest for a resumed render. text: the stored manifest; empty if the file is new.
Result<SequenceManifest> manifest_to_resume(const std::string& pattern, const std::filesystem::path& name,
                                            const std::string& text, const SequenceContent& content, FrameRange range) {
    if (text.empty()) {
        const Result<NumberedFiles> files = existing_frames(pattern);
        const auto first = files->lower_bound(range.first);
        if (first == files->end() || first->first > range.last) return SequenceManifest{content, {}};
        return Error{
            fmt::format("{}: cannot be resumed, since the manifest {} is missing, which says what {} is made of; "
                        "leave out --resume to render it anew",
                        pattern, name.string(), first->second.string())};
    }
    Result<SequenceManifest> manifest = manifest_of(name, text);
    if (!manifest) return manifest;
    const std::vector<std::string> differences = content_differences(manifest->content, content);
    if (differences.empty()) return manifest;
    return Error{fmt::format("{}: cannot be resumed: {}; leave out --resume to render it anew, or choose another name",
                             pattern, fmt::join(differences, ", "))};
}

/// The manifest for a render without resume. If the content changes, no other process may write frames of the sequence.
Result<SequenceManifest> manifest_anew(const std::string& pattern, int file, const std::string& text,
                                       const SequenceContent& content, FrameRange range) {
    const Result<SequenceManifest> earlier = manifest_of(pattern, text);
    if (earlier && content_differences(earlier->content, content).empty()) return *earlier;
    if (!text.empty()) {
        if (!lock_all_frames(file)) return written_by_another(pattern);
        unlock_outside(file, range);
    }
    return SequenceManifest{content, {}};
}

}  // namespace

Result<std::filesystem::path> manifest_name(const std::string& pattern) {
    Result<std::filesystem::path> name = name_with_word(pattern, "row");
    if (name) *name += ".json";
    return name;
}

Result<SequenceManifest> read_manifest(const std::string& pattern) {
    const Result<std::filesystem::path> name = manifest_name(pattern);
    if (!name) return name.error();
    const std::string text = read_whole_file(*name);
    if (text.empty())
        return Error{fmt::format("{}: the manifest {} is missing, which render writes beside numbered pictures",
                                 pattern, name->string())};
    return manifest_of(*name, text);
}

std::vector<std::string> content_differences(const SequenceContent& was, const SequenceContent& is) {
    const auto value_in = [](const SequenceContent& content, const std::string& name) {
        const auto found = std::ranges::find(content, name, &SequenceContent::value_type::first);
        return found == content.end() ? std::string("not set") : found->second;
    };
    std::vector<std::string> differences;
    for (const auto& [name, value] : is)
        if (const std::string earlier = value_in(was, name); earlier != value)
            differences.push_back(fmt::format("{} was {} and is {}", name, earlier, value));
    for (const auto& [name, value] : was)
        if (value_in(is, name) == "not set")
            differences.push_back(fmt::format("{} was {} and is not set", name, value));
    return differences;
}

bool is_whole_picture(const std::filesystem::path& file) {
    if (file_ending(file) == ".exr") return is_whole_exr(file);
    // A PNG chunk: length, type, data, checksum of type and data; big-endian.
    const std::string bytes = read_whole_file(file);
    const auto number_at = [&bytes](size_t at) {
        uint32_t number = 0;
        for (size_t i = 0; i < 4; ++i) number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
        return number;
    };
    if (!bytes.starts_with("\x89PNG\r\n\x1a\n")) return false;
    for (size_t at = 8; bytes.size() - at >= 12;) {
        const size_t length = number_at(at);
        if (bytes.size() - at - 12 < length) return false;
        const auto* kind = reinterpret_cast<const Bytef*>(&bytes[at + 4]);
        if (crc32(0, kind, static_cast<uInt>(length + 4)) != number_at(at + 8 + length)) return false;
        const bool is_last = bytes.compare(at + 4, 4, "IEND") == 0;
        at += 12 + length;
        if (is_last) return at == bytes.size();
    }
    return false;
}

Result<PictureSequence> PictureSequence::begin(const std::string& pattern, const SequenceContent& content,
                                               FrameRange range, bool resume) {
    const Result<std::filesystem::path> name = manifest_name(pattern);
    if (!name) return name.error();
    PictureSequence sequence;
    sequence.manifest_ = *name;
    const std::filesystem::path folder = name->parent_path();
    std::error_code code;
    const auto unwritable = [&] {
        return Error{fmt::format("{}: cannot be written: {}", name->string(), std::strerror(errno))};
    };
    do {  // repeats if another process removed the file or the folder after they were created
        if (sequence.file_ >= 0) close(sequence.file_);
        if (!folder.empty()) {
            sequence.made_folder_ |= std::filesystem::create_directory(folder, code);
            if (code) return Error{fmt::format("{}: the folder cannot be made: {}", pattern, code.message())};
        }
        sequence.file_ = open(name->c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (sequence.file_ < 0 && !folder.empty() && !std::filesystem::exists(folder, code)) continue;
        if (sequence.file_ < 0) return unwritable();
        if (!lock_bytes(sequence.file_, F_WRLCK, range.first, frame_count(range))) {
            if (errno == EAGAIN || errno == EACCES) return written_by_another(pattern);
            return unwritable();
        }
    } while (!is_at(sequence.file_, *name));
    if (!lock_bytes(sequence.file_, F_WRLCK, kTextByte, 1, true)) return unwritable();
    const std::string text = read_whole_file(*name);
    Result<SequenceManifest> manifest = resume ? manifest_to_resume(pattern, *name, text, content, range)
                                               : manifest_anew(pattern, sequence.file_, text, content, range);
    if (!manifest) return manifest.error();
    remove_abandoned_frames(pattern, range);
    remove_pictures(pattern, range, resume ? manifest->ranges : std::vector<FrameRange>{});
    add_range(manifest->ranges, range);
    if (!write_text(sequence.file_, text_of(*manifest))) return unwritable();
    lock_bytes(sequence.file_, F_UNLCK, kTextByte, 1);
    sequence.pattern_ = pattern;
    return sequence;
}

PictureSequence::PictureSequence(PictureSequence&& other) noexcept
    : manifest_(std::move(other.manifest_)),
      pattern_(std::move(other.pattern_)),
      file_(std::exchange(other.file_, -1)),
      made_folder_(std::exchange(other.made_folder_, false)) {}

PictureSequence& PictureSequence::operator=(PictureSequence&& other) noexcept {
    std::swap(manifest_, other.manifest_);
    std::swap(pattern_, other.pattern_);
    std::swap(file_, other.file_);
    std::swap(made_folder_, other.made_folder_);
    return *this;
}

PictureSequence::~PictureSequence() {
    std::error_code ignored;
    if (file_ >= 0) {
        const bool is_unused = pattern_.empty() ? lseek(file_, 0, SEEK_END) == 0 : existing_frames(pattern_)->empty();
        if (is_unused && lock_all_frames(file_)) std::filesystem::remove(manifest_, ignored);
        close(file_);
    }
    if (made_folder_) std::filesystem::remove(manifest_.parent_path(), ignored);  // only if it is empty
}

}  // namespace stage
