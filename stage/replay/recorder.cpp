#include "recorder.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <map>
#include <memory>
#include <optional>
#include <set>

#include "call_text.h"
#include "digest.h"
#include "seen_slots.h"
#include "stage/plugins/registration.h"
#include "watched_opengl.h"

namespace stage {
namespace {

using Revision = std::pair<int32_t, int64_t>;  // handle of an image and number of its changes

struct Recorder {
    std::ostream& out;
    size_t depth = 0;                        // nesting depth of the next line
    int64_t frame = INT64_MIN;               // last written frame number
    std::string open_call{};                 // service call that is not answered and not written yet
    std::vector<std::string> walk{};         // calls of the current mesh walk
    std::map<std::string, size_t> walks{};   // numbers of the written walks, by text
    std::map<Revision, size_t> revisions{};  // numbers of the written images, by revision
    std::map<std::string, size_t> images{};  // numbers of the written images, by text
    std::set<PluginId> plugins{};            // written plug-ins
    std::map<const Instance*, SeenSlots> slots{};
    FieldTables tables{};
    std::optional<Error> error{};
};

std::unique_ptr<Recorder> recorder;  // global, since the functions of the call watch cannot receive it as an argument

void write_line(size_t depth, std::string_view text) {
    recorder->out << std::string(depth, ' ') << text << '\n';
}

/// Writes the walk, or only its number if an equal walk was written before.
void end_walk() {
    if (recorder->walk.empty()) return;
    const auto [known, is_new] =
        recorder->walks.try_emplace(fmt::format("{}", fmt::join(recorder->walk, "\n")), recorder->walks.size() + 1);
    write_line(recorder->depth, fmt::format("walk {}", known->second));
    for (const std::string& call : recorder->walk)
        if (is_new) write_line(recorder->depth + 1, call);
    recorder->walk.clear();
}

void put(const std::string& text) {
    if (text.starts_with("_api__geomod_")) {
        recorder->walk.push_back(text);
        return;
    }
    end_walk();
    write_line(recorder->depth, text);
}

void put_open_call() {
    if (!recorder->open_call.empty()) put(std::exchange(recorder->open_call, ""));
}

/// The rows of an image, run-length encoded: the bytes of a pixel in hexadecimal and the number of its repetitions.
std::string image_rows(const Image& image, const uint8_t* pixels) {
    const auto bytes = static_cast<size_t>(bytes_per_pixel(image.format));
    std::string rows;
    for (int32_t y = 0; y < image.height; ++y) {
        std::string_view previous;
        size_t repeated = 0;
        const auto end_run = [&] {
            if (repeated == 0) return;
            for (const char byte : previous) rows += fmt::format("{:02x}", static_cast<unsigned char>(byte));
            rows += repeated > 1 ? fmt::format("*{} ", repeated) : " ";
        };
        for (int32_t x = 0; x < image.width; ++x, pixels += bytes) {
            const std::string_view pixel(reinterpret_cast<const char*>(pixels), bytes);
            if (pixel != previous) {
                end_run();
                previous = pixel;
                repeated = 0;
            }
            ++repeated;
        }
        end_run();
        rows.back() = '\n';
    }
    return rows;
}

/// The text "image 1". Writes the image before, if it is new.
std::string image_text(int32_t handle, const uint8_t* pixels) {
    const Image* image = find_image(*current_stage(), handle);
    if (!image || !pixels) return "null";
    size_t& number = recorder->revisions[{handle, image->revision}];
    if (number == 0) {
        const std::string rows = image_rows(*image, pixels);
        const auto [known, is_new] = recorder->images.try_emplace(rows, recorder->images.size() + 1);
        number = known->second;
        if (is_new) {
            end_walk();
            write_line(recorder->depth, fmt::format("image {} {}", number, bytes_per_pixel(image->format)));
            for (size_t begin = 0; begin < rows.size(); begin = rows.find('\n', begin) + 1)
                write_line(recorder->depth + 1, std::string_view(rows).substr(begin, rows.find('\n', begin) - begin));
        }
    }
    return fmt::format("image {}", number);
}

std::string answer_text(ServiceCall& call) {
    std::string text;
    for_each_answer(call, [&](auto* value) {
        if (!text.empty()) text += ", ";
        if constexpr (std::is_same_v<decltype(value), uint8_t**>)
            text += image_text(std::get<int32_t>(call.arguments[0]), *value);
        else
            text += value_text(*value);
    });
    return text;
}

bool service_begins(ServiceCall& call) {
    if (running_registration()) return true;
    put_open_call();
    recorder->open_call = call_text(call.name, call.arguments);
    return true;
}

void service_ends(ServiceCall& call) {
    if (running_registration()) return;
    const std::string answer = answer_text(call);
    const std::string call_itself = std::exchange(recorder->open_call, "");
    if (call_itself.empty()) {  // already written, before the calls that it caused
        ++recorder->depth;
        put("= " + answer);
        --recorder->depth;
    } else {
        put(call_itself + (answer.empty() ? "" : " = " + answer));
    }
}

void opengl_called(const char* name, std::span<const CallValue> arguments) {
    put(call_text(name, arguments));
}

void put_plugin(PluginId id) {
    if (!recorder->plugins.insert(id).second) return;
    write_line(0, "plugin " + quoted(plugin(id).name));
    for (const std::string& call : registration_texts(plugin(id))) write_line(1, call);
    Result<FieldTable> table = read_field_table(plugin(id));
    if (!table) recorder->error = table.error();
    if (table) recorder->tables[id] = std::move(*table);
}

void put_changed_slots(const char* who, const Instance& instance) {
    for (const std::string& slot : take_changed_slots(recorder->slots[&instance], instance))
        put(fmt::format("{} {}", who, slot));
}

void entry_begins(const RunningCall& call) {
    const Stage& stage = *current_stage();
    const bool is_nested = stage.running.size() > 1;
    if (is_nested) {
        put_open_call();
        ++recorder->depth;
    }
    if (std::string_view(call.entry_point) == "PLUGIN_INIT_FUNCTION") {
        put_plugin(call.instance->plugin);
        const std::string container = find_container(stage, call.container_handle)->name;
        put(fmt::format("instance {} {}", quoted(container), quoted(plugin(call.instance->plugin).name)));
    }
    if (!is_nested && stage.clock.frame != recorder->frame) {
        recorder->frame = stage.clock.frame;
        put(fmt::format("frame {}", recorder->frame));
    }
    put(entry_text(stage, call));
    ++recorder->depth;
    put_changed_slots(is_reentry(stage, call) ? "wrote" : "set", *call.instance);
}

void entry_ends(const RunningCall& call) {
    const Stage& stage = *current_stage();
    put_changed_slots("wrote", *call.instance);
    for (const std::string& text : end_texts(call, recorder->tables.at(call.instance->plugin))) put(text);
    end_walk();
    --recorder->depth;
    if (stage.running.size() > 1) --recorder->depth;
    if (std::string_view(call.entry_point) == "PLUGIN_CLEANUP_FUNCTION") recorder->slots.erase(call.instance);
}

constexpr CallWatch kRecorderWatch = {entry_begins, nullptr, entry_ends, service_begins, service_ends, opengl_called};

}  // namespace

void begin_recording(std::ostream& out, uint32_t seed, const std::string& title) {
    recorder = std::make_unique<Recorder>(Recorder{.out = out});
    out << "tovu-calls 1\n# " << title << "\nseed " << seed << '\n';
    watch_calls(&kRecorderWatch);
    use_opengl(watched_opengl());
}

Result<Done> end_recording() {
    watch_calls(nullptr);
    use_opengl(silent_opengl());
    const std::unique_ptr<Recorder> ended = std::move(recorder);
    ended->out << "end\n";
    if (ended->error) return *ended->error;
    return Done{};
}

}  // namespace stage
