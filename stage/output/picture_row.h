// Rows of numbered pictures: what they were made of, which renders write them, which pictures are whole.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// What decides the bytes of a row's pictures, as names and values: {"seed", "3"}. Differences are listed in this
/// order.
using RowContent = std::vector<std::pair<std::string, std::string>>;

struct FrameSpan {
    int first = 0;
    int last = 0;  // included
};

/// What is known about a row, from the file beside it.
struct RowManifest {
    RowContent content;
    std::vector<FrameSpan> spans;  // frames whose pictures, as far as they are there, were made of it; ascending
};

/// The manifest of a pattern: the number is replaced by "row", so that "frames/%04d.png" has "frames/row.png.json".
/// Errors: a pattern that frame_name rejects, or whose number is in the folder's name.
STAGE_EXPORT Result<std::filesystem::path> manifest_name(const std::string& pattern);

/// Errors: there is no manifest; it is not one. The message says what to do.
STAGE_EXPORT Result<RowManifest> read_manifest(const std::string& pattern);

/// "seed was 1 and is 2", a text for each name whose values differ or that only one of them has.
STAGE_EXPORT std::vector<std::string> content_differences(const RowContent& was, const RowContent& is);

/// True for a PNG file that is there from the first to the last byte with right checksums, and for an OpenEXR file that
/// can be read to its end.
STAGE_EXPORT bool is_whole_picture(const std::filesystem::path& file);

/// A row whose frames of one span are this object's to write, against other processes too, also on other machines that
/// share the folder. Ends with the object or the process. Move only.
class STAGE_EXPORT PictureRow {
  public:
    /// Makes the last folder of the name if it does not exist. Writes the manifest, and removes what earlier renders
    /// left unfinished in the span. resume: pictures of the span stay if they were made of `content`. Without it, all
    /// pictures of the span are removed; if the row was made of something else, pictures beyond the span no longer
    /// count as part of it. Errors: another process writes frames of this span (or any, when the content changes); with
    /// resume, the row was made of something else, or it is not known of what.
    static Result<PictureRow> begin(const std::string& pattern, const RowContent& content, FrameSpan span, bool resume);

    PictureRow(PictureRow&& other) noexcept;
    PictureRow& operator=(PictureRow&& other) noexcept;
    /// If no picture was written, removes the manifest, and the folder if `begin` made it.
    ~PictureRow();

  private:
    PictureRow() = default;
    std::filesystem::path manifest_;
    std::string pattern_;  // empty until the row has begun
    int file_ = -1;        // the manifest, which carries the locks
    bool made_folder_ = false;
};

}  // namespace stage
