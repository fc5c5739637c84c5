// The open outputs of a render: each takes the frames that it wants.
#pragma once

#include <optional>
#include <vector>

#include "output_plan.h"
#include "stage/assets/picture.h"
#include "stage/output/picture_row.h"
#include "stage/output/png_file.h"
#include "stage/output/video_file.h"

namespace tovu {

struct Output {
    OutputPlan plan;
    std::optional<stage::VideoFile> video;
    stage::DeepPicture sheet;
    std::optional<stage::PictureRow> row;  // of numbered pictures
    std::vector<bool> is_there;            // of numbered pictures, from the first frame: whole, and not written again
};

/// Destroyed before finish_outputs, it leaves no video and no sheet; pictures that were complete stay. Move only.
struct Outputs {
    std::vector<Output> list;
    std::optional<float> shoulder;  // of the scene
    stage::PictureTexts texts;      // of every picture file: program, scene and seed
};

/// A frame on its way to the outputs. The pictures of 8 and of 16 bits are made when the first output needs them; a
/// frame that is read back from a 16-bit picture has only that one, which is enough for videos.
struct FramePictures {
    stage::DrawnPicture drawn;
    std::optional<stage::Picture> bytes;
    std::optional<stage::DeepPicture> deep;
};

/// Starts the videos, makes the folders of numbered pictures and begins their rows (stage/output/picture_row.h).
/// content: as scene_content gives it. resume: pictures that are there and whole are kept.
/// Errors: also if another process writes one of the files.
stage::Result<Outputs> open_outputs(const std::vector<OutputPlan>& plans, const stage::SceneDescription& scene,
                                    const stage::RowContent& content, bool resume);

/// False for a frame that no output takes; it need not be drawn.
bool wants_frame(const Outputs& outputs, int frame);

/// Gives a frame to the outputs that want it. Frames must come in ascending order.
stage::Result<stage::Done> write_frame(Outputs& outputs, int frame, FramePictures pictures);

/// After the last frame: completes videos and sheets, which get their names now.
stage::Result<stage::Done> finish_outputs(Outputs& outputs);

}  // namespace tovu
