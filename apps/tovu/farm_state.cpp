#include "farm_state.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "stage/output/frame_names.h"
#include "stage/output/whole_file.h"

namespace tovu {

using Json = nlohmann::ordered_json;
using stage::Error;
using stage::Result;

Result<std::filesystem::path> farm_folder(const std::string& output) {
    if (!stage::is_frame_pattern(output)) return std::filesystem::path(output + ".farm");
    Result<std::filesystem::path> folder = stage::name_with_word(output, "row");
    if (folder) *folder += ".farm";
    return folder;
}

Result<FarmState> read_farm(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "farm.json";
    const std::string text = stage::read_whole_file(file);
    if (text.empty())
        return Error{
            fmt::format("{}: there is no such file; `farm SCENE --chunks N -o OUTPUT` writes it", file.string())};
    try {
        const Json json = Json::parse(text);
        FarmState state;
        json.at("output").get_to(state.output);
        json.at("row").get_to(state.pattern);
        json.at("first").get_to(state.frames.first);
        json.at("last").get_to(state.frames.last);
        json.at("chunks").get_to(state.chunks);
        json.at("tries").get_to(state.tries);
        json.at("chunk_command").get_to(state.chunk_command);
        json.at("video_command").get_to(state.video_command);
        json.at("cluster_arguments").get_to(state.cluster_arguments);
        json.at("chunk_job").get_to(state.chunk_job);
        json.at("finish_job").get_to(state.finish_job);
        json.at("finished").get_to(state.finished);
        return state;
    } catch (const Json::exception&) {
        return Error{fmt::format("{}: is not the state of a farm; remove the folder and submit again", file.string())};
    }
}

Result<stage::Done> write_farm(const std::filesystem::path& folder, const FarmState& state) {
    const Json json = {{"output", state.output},
                       {"row", state.pattern},
                       {"first", state.frames.first},
                       {"last", state.frames.last},
                       {"chunks", state.chunks},
                       {"tries", state.tries},
                       {"chunk_command", state.chunk_command},
                       {"video_command", state.video_command},
                       {"cluster_arguments", state.cluster_arguments},
                       {"chunk_job", state.chunk_job},
                       {"finish_job", state.finish_job},
                       {"finished", state.finished}};
    return stage::write_whole_file(folder / "farm.json", json.dump(2) + "\n");
}

FrameRange chunk_frames(const FarmState& state, int chunk) {
    return *parse_chunk(fmt::format("{}/{}", chunk, state.chunks), state.frames);
}

}  // namespace tovu
