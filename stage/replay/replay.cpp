#include "replay.h"

#include <fmt/format.h>

#include <map>
#include <utility>

#include "call_text.h"
#include "digest.h"
#include "seen_slots.h"
#include "stage/plugins/entry_point_call.h"
#include "stage/plugins/frames.h"
#include "stage/plugins/registration.h"
#include "watched_opengl.h"

namespace stage {
namespace {

struct Player {
    const CallFile& file;
    const PluginFinder& find;
    StagePtr stage;
    size_t next = 0;                              // index of the next line
    size_t depth = 0;                             // depth of the lines that belong to the running call
    std::string where{};                          // the running entry point
    std::map<std::string, PluginId> plugins{};    // by recorded name
    std::map<std::string, PluginId> instances{};  // by container; set by the line "instance"
    std::map<const Instance*, SeenSlots> slots{};
    std::map<PluginId, FieldTable> tables{};
    std::vector<ServiceCall*> requests{};  // to other plug-ins, outermost first
    ReplayReport report{};
    std::optional<Error> error{};
};

Player* player = nullptr;  // global, since the functions of the call watch cannot receive it as an argument

bool has_stopped() {
    return player->error || player->report.difference;
}

/// The next line, or null if it does not belong to the running call.
const CallLine* line_here() {
    if (player->next == player->file.lines.size()) return nullptr;
    const CallLine& line = player->file.lines[player->next];
    return line.depth == player->depth ? &line : nullptr;
}

void refuse(const CallLine& line, const std::string& message) {
    if (!has_stopped()) player->error = Error{fmt::format("{}:{}: {}", player->file.name, line.number, message)};
}

void differ(const std::string& now) {
    if (has_stopped()) return;
    const CallLine* line = line_here();
    const size_t near = std::min(player->next, player->file.lines.size() - 1);
    const std::string frame = player->report.frames > 0 ? fmt::format("frame {}, ", player->stage->clock.frame) : "";
    player->report.difference = {player->file.lines[near].number, frame + player->where,
                                 line ? line->text : "nothing more in this call", now};
}

/// Compares the next line with `now`. False, and a difference, if they differ.
bool expect(const std::string& now) {
    if (has_stopped()) return false;
    const CallLine* line = line_here();
    if (!line || line->text != now) {
        differ(now);
        return false;
    }
    ++player->next;
    return true;
}

void play_entry(const CallLine& line);

/// Takes the next value of a list.
std::string_view take_value(std::string_view& list) {
    const size_t end = std::min(list.find(", "), list.size());
    const std::string_view value = list.substr(0, end);
    list.remove_prefix(std::min(end + 2, list.size()));
    return value;
}

bool read_answer(std::string_view text, uint8_t** pixels) {
    *pixels = nullptr;
    uint32_t number = 0;
    if (text == "null") return true;
    if (!text.starts_with("image ") || !read_value_text(text.substr(6), number)) return false;
    const auto found = player->file.images.find(number);
    if (found == player->file.images.end()) return false;
    *pixels = const_cast<uint8_t*>(found->second.data());  // the service passes a pointer to non-const
    return true;
}

template <class Value>
bool read_answer(std::string_view text, Value* value) {
    return read_value_text(text, *value);
}

void give_answers(ServiceCall& call, const CallLine& line) {
    std::string_view rest = line.answer ? std::string_view(*line.answer) : std::string_view();
    bool right = true;
    for_each_answer(call, [&](auto* value) { right = read_answer(take_value(rest), value) && right; });
    if (!right || !rest.empty())
        refuse(line, fmt::format("'{}' is not an answer of {}", line.answer.value_or(""), call.name));
}

/// Plays the calls that a request causes, then gives its answer.
void play_request(ServiceCall& call) {
    player->requests.push_back(&call);
    ++player->depth;
    for (const CallLine* line = line_here(); line && !line->answer && !has_stopped(); line = line_here())
        play_entry(*line);
    if (const CallLine* line = line_here(); line && line->text.empty() && !has_stopped()) {
        ++player->next;
        give_answers(call, *line);
    } else {
        refuse(player->file.lines[player->next - 1], "the answer of the request is missing");
    }
    --player->depth;
    player->requests.pop_back();
}

bool service_begins(ServiceCall& call) {
    if (running_registration()) return true;
    const CallLine* line = line_here();
    if (!expect(call_text(call.name, call.arguments))) return false;
    ++player->report.calls;
    const bool leads_on =
        player->next < player->file.lines.size() && player->file.lines[player->next].depth > line->depth;
    if (leads_on && std::string_view(call.name) == "_api__geom_dispatcher")
        play_request(call);
    else
        give_answers(call, *line);
    return false;
}

void opengl_called(const char* name, std::span<const CallValue> arguments) {
    if (has_stopped()) return;
    if (expect(call_text(name, arguments))) ++player->report.calls;
}

void entry_begins(const RunningCall& call) {
    for (const CallLine* line = line_here(); line && line->text.starts_with("set ") && !has_stopped();
         line = line_here()) {
        if (!set_slot(*call.instance, std::string_view(line->text).substr(4)))
            refuse(*line, fmt::format("'{}' is not a value of a parameter of {}", line->text.substr(4),
                                      plugin(call.instance->plugin).name));
        ++player->next;
    }
    for (const std::string& slot : take_changed_slots(player->slots[call.instance], *call.instance))
        if (is_reentry(*player->stage, call)) expect("wrote " + slot);
}

void entry_ends(const RunningCall& call) {
    for (const std::string& slot : take_changed_slots(player->slots[call.instance], *call.instance))
        expect("wrote " + slot);
    const FieldTable& table = player->tables.at(call.instance->plugin);
    const CallLine* line = line_here();
    if (table.block.empty() && line && line->text.starts_with("state ")) ++player->next;
    for (const std::string& text : end_texts(call, table)) expect(text);
    if (std::string_view(call.entry_point) == "PLUGIN_CLEANUP_FUNCTION") player->slots.erase(call.instance);
}

constexpr CallWatch kPlayerWatch = {entry_begins, nullptr, entry_ends, service_begins, nullptr, opengl_called};

int32_t container_of(const std::string& name) {
    return find_container_by_name(*player->stage, name);
}

/// The recorded arguments of an entry point, after the container's name.
struct EntryArguments {
    std::string name;
    std::string container;
    int32_t whole = 0;  // the first one, if it is an integer
    float opacity = 0;  // for PLUGIN_RENDER_OPENGL
};

std::optional<EntryArguments> read_entry(std::string_view text) {
    EntryArguments entry;
    const size_t open = text.find('(');
    if (open == std::string_view::npos || !text.ends_with(')')) return {};
    entry.name = text.substr(0, open);
    std::string_view rest = text.substr(open + 1, text.size() - open - 2);
    if (!take_quoted(rest, entry.container)) return {};
    if (rest.starts_with(", ")) rest.remove_prefix(2);
    const std::string_view first = take_value(rest);
    const std::string_view second = take_value(rest);
    const bool has_number = entry.name != "PLUGIN_INIT_FUNCTION" && entry.name != "PLUGIN_CLEANUP_FUNCTION" &&
                            entry.name != "PLUGIN_DISPATCHER_CALLBACK";
    if (has_number && !read_value_text(first, entry.whole)) return {};
    if (entry.name == "PLUGIN_RENDER_OPENGL" && !read_value_text(second, entry.opacity)) return {};
    return entry;
}

/// Calls the entry point. False if it cannot be called now.
bool call_entry(const EntryArguments& entry) {
    Stage& stage = *player->stage;
    const int32_t container = container_of(entry.container);
    Instance* instance = instance_of(stage, container);
    if (entry.name == "PLUGIN_INIT_FUNCTION") {
        const auto announced = player->instances.find(entry.container);
        return announced != player->instances.end() && !instance && add_instance(stage, container, announced->second);
    }
    if (!instance) return false;
    if (entry.name == "PLUGIN_CLEANUP_FUNCTION") return remove_geometry(stage, container);
    if (entry.name == "PLUGIN_CHANGED_CALLBACK") return notify_changed(stage, container, entry.whole);
    if (entry.name == "PLUGIN_EXEC_ACTION") return execute_action(stage, container, entry.whole);
    if (entry.name == "PLUGIN_RENDER_OPENGL") return call_render(stage, container, entry.whole, entry.opacity);
    if (entry.name == "PLUGIN_NEW_GEOM") {
        call_entry_point(stage, *instance, "PLUGIN_NEW_GEOM", &EntryPoints::new_geom, entry.whole);
        return true;
    }
    if (entry.name != "PLUGIN_DISPATCHER_CALLBACK" || player->requests.empty()) return false;
    const std::span<const CallValue> request = player->requests.back()->arguments;
    return dispatch(stage, container, std::get<int32_t>(request[1]), std::get<void*>(request[2]),
                    std::get<void*>(request[3]));
}

void play_entry(const CallLine& line) {
    const std::optional<EntryArguments> entry = read_entry(line.text);
    if (!entry) return refuse(line, fmt::format("'{}' is not a call of an entry point", line.text));
    const std::string outer = std::exchange(player->where, line.text);
    ++player->next;
    ++player->depth;
    if (!call_entry(*entry)) refuse(line, fmt::format("{} cannot be called here", line.text));
    if (line_here()) differ("the call returns");
    --player->depth;
    player->where = outer;
}

void play_plugin(const CallLine& line, const std::string& name) {
    const Result<std::string> file = player->find(name);
    const Result<PluginId> loaded = file ? load_plugin(*player->stage, *file) : Result<PluginId>(file.error());
    Result<FieldTable> table = loaded ? read_field_table(plugin(*loaded)) : Result<FieldTable>(loaded.error());
    if (!table) return refuse(line, table.error().message);
    player->plugins[name] = *loaded;
    player->tables[*loaded] = std::move(*table);
    player->where = "PLUGIN_INIT of " + name;
    ++player->next;
    ++player->depth;
    for (const std::string& call : registration_texts(plugin(*loaded))) expect(call);
    if (line_here()) differ("PLUGIN_INIT returns");
    --player->depth;
}

/// Plays a line of depth 0 that is not a call of an entry point. False for any other line.
bool play_note(const CallLine& line) {
    std::string_view rest = line.text;
    const auto take = [&rest](std::string_view word) {
        const bool is_word = rest.starts_with(word);
        if (is_word) rest.remove_prefix(word.size());
        return is_word;
    };
    std::string name;
    std::string plugin_name;
    if (take("plugin ")) {
        if (!take_quoted(rest, name)) return false;
        play_plugin(line, name);
        return true;
    }
    ++player->next;
    if (take("frame ")) {
        ++player->report.frames;
        return read_value_text(rest, player->stage->clock.frame);
    }
    if (!take("instance ") || !take_quoted(rest, name) || !take(" ") || !take_quoted(rest, plugin_name)) return false;
    const auto owner = player->plugins.find(plugin_name);
    if (owner == player->plugins.end()) return false;
    player->instances[name] = owner->second;
    if (container_of(name) == kNoObject) add_container(*player->stage, name);
    return true;
}

void play() {
    while (player->next < player->file.lines.size() && !has_stopped()) {
        const CallLine& line = player->file.lines[player->next];
        if (line.depth > 0)
            differ("the call returns");
        else if (line.text.starts_with("PLUGIN_"))
            play_entry(line);
        else if (!play_note(line))
            refuse(line, fmt::format("'{}' is not allowed here", line.text));
    }
}

}  // namespace

Result<ReplayReport> replay_calls(const CallFile& file, const PluginFinder& find) {
    StageOptions options;
    options.seed = file.seed;
    Player playing{.file = file, .find = find, .stage = make_stage(options)};
    player = &playing;
    watch_calls(&kPlayerWatch);
    use_opengl(watched_opengl());
    play();
    // After a difference, remaining instances are cleaned up without the watch, since the Stage has none of their
    // objects.
    watch_calls(nullptr);
    use_opengl(silent_opengl());
    playing.stage.reset();
    player = nullptr;
    if (playing.error) return *playing.error;
    return playing.report;
}

}  // namespace stage
