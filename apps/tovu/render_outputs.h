// The open outputs of a render. Each takes the frames that it needs.
#pragma once

#include <optional>
#include <vector>

#include "output_plan.h"
#include "stage/assets/picture.h"
#include "stage/output/picture_sequence.h"
#include "stage/output/png_file.h"
#include "stage/output/video_file.h"

namespace tovu {

struct Output {
    OutputPlan plan;
    std::optional<stage::VideoFile> video;
    stage::DeepPicture sheet;
    std::optional<stage::PictureSequence> sequence;  // for numbered pictures
    std::vector<bool> is_there;  // for numbered pictures, from the first frame: complete, so not written again
};

/// If it is destroyed before finish_outputs, only complete pictures stay. Move only.
struct Outputs {
    std::vector<Output> list;
    std::optional<float> shoulder;  // of the scene
    stage::PictureTexts texts;      // for every picture file: program, scene and seed
};

/// The pictures of a frame. The 8-bit and the 16-bit picture are made when an output first needs them. A frame that was
/// read from a 16-bit picture has only that one, which is enough for videos.
struct FramePictures {
    stage::DrawnPicture drawn;
    std::optional<stage::Picture> bytes;
    std::optional<stage::DeepPicture> deep;
};

/// Starts the videos, creates the folders of numbered pictures and locks these (stage/output/picture_sequence.h).
/// content: from scene_content. resume: keeps existing complete pictures.
/// Errors include another process that writes one of the files.
stage::Result<Outputs> open_outputs(const std::vector<OutputPlan>& plans, const stage::SceneDescription& scene,
                                    const stage::SequenceContent& content, bool resume);

/// False for a frame that no output needs, which is then not drawn.
bool wants_frame(const Outputs& outputs, int frame);

/// Writes a frame to the outputs that need it. Call in ascending order of frames.
stage::Result<stage::Done> write_frame(Outputs& outputs, int frame, FramePictures pictures);

/// Call after the last frame. Completes videos and sheets and gives them their names.
stage::Result<stage::Done> finish_outputs(Outputs& outputs);

}  // namespace tovu
