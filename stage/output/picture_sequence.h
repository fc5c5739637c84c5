// Sequences of numbered pictures: their manifest, the locks against other renders, the check for complete files.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "stage/frame_range.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Everything that the bytes of the pictures depend on, as names and values: {"seed", "3"}. Differences are listed in
/// this order.
using SequenceContent = std::vector<std::pair<std::string, std::string>>;

/// The content of the JSON file that is stored beside the pictures.
struct SequenceManifest {
    SequenceContent content;
    std::vector<FrameRange> ranges;  // frames whose existing pictures were made from `content`; ascending
};

/// The file name of the manifest. "row" replaces the number: "frames/row.png.json" for "frames/%04d.png". Errors: a
/// pattern that frame_name rejects, or whose number is in the folder's name.
STAGE_EXPORT Result<std::filesystem::path> manifest_name(const std::string& pattern);

/// Errors: the manifest is missing or malformed. The message says what to do.
STAGE_EXPORT Result<SequenceManifest> read_manifest(const std::string& pattern);

/// A text such as "seed was 1 and is 2" for each name whose values differ or that only one content has.
STAGE_EXPORT std::vector<std::string> content_differences(const SequenceContent& was, const SequenceContent& is);

/// True for a complete PNG file with valid checksums, and for an OpenEXR file that can be read to its end.
STAGE_EXPORT bool is_whole_picture(const std::filesystem::path& file);

/// The exclusive right to write one range of frames of a sequence. Other processes are locked out, also on other
/// machines that share the folder. The lock ends with the object or the process. Move only.
class STAGE_EXPORT PictureSequence {
  public:
    /// Creates the last folder of the name if it does not exist, writes the manifest, and removes incomplete files that
    /// earlier renders left in the range.
    /// resume: keeps the pictures of the range that were made from `content`. Without it, all pictures of the range are
    /// removed, and if the manifest has other content, pictures outside the range no longer belong to the sequence.
    /// Errors: another process writes frames of this range (or any frame, if the content changes); with resume, the
    /// manifest has other content or is missing.
    static Result<PictureSequence> begin(const std::string& pattern, const SequenceContent& content, FrameRange range,
                                         bool resume);

    PictureSequence(PictureSequence&& other) noexcept;
    PictureSequence& operator=(PictureSequence&& other) noexcept;
    /// If no picture was written, removes the manifest, and the folder if `begin` made it.
    ~PictureSequence();

  private:
    PictureSequence() = default;
    std::filesystem::path manifest_;
    std::string pattern_;  // empty until `begin` has succeeded
    int file_ = -1;        // the open manifest, which holds the locks
    bool made_folder_ = false;
};

}  // namespace stage
