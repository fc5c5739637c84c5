#include "timeline_reader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "container_reader.h"
#include "geometry_reader.h"
#include "image_reader.h"

namespace stage {

namespace {

// Targets of the readers: a value and the scene that the readers look up names in.
struct WrittenEntry {
    const SceneDescription& scene;
    TimelineEntry entry;
};

struct WrittenTrack {
    const SceneDescription& scene;
    Track track;
};

struct WrittenKey {
    const Track& track;
    TrackKey key;
};

void require(KeyReader& reader, const toml::table& table, const char* section, const std::vector<std::string>& keys) {
    for (const std::string& key : keys) {
        if (!table.contains(key)) report(reader, table.source(), fmt::format("{} needs {}", section, key));
    }
}

/// The use of a key of [[at]]. An entry changes either a container or an image.
enum class EntryUse {
    kTime,          // required
    kContainer,     // required for a container
    kPluginAction,  // change of a container with a plug-in
    kShapeAction,   // change of a container without a plug-in
    kImage,         // required for an image
};

struct EntryRow {
    EntryUse use;
    KeyRow<WrittenEntry> key;
};

const EntryRow kEntryRows[] = {
    {EntryUse::kTime,
     {"time",
      [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { read_number(r, e, 0.0, kMaxSeconds, w.entry.time); }}},
    {EntryUse::kContainer,
     {"container", [](KeyReader& r, const KeyedNode& e,
                      WrittenEntry& w) { w.entry.container = read_container_name(r, e, w.scene.containers); }}},
    {EntryUse::kPluginAction,
     {"parameters",
      [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { read_settings(r, e, w.entry.parameters); }}},
    {EntryUse::kPluginAction,
     {"press",
      [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) {
          read_text(r, e, w.entry.press);
          w.entry.press_place = place_of(r, e.node.source());
      }}},
    {EntryUse::kPluginAction,
     {"burst",
      [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) {
          read_integer(r, e, 1, INT32_MAX, w.entry.burst);
          w.entry.burst_place = place_of(r, e.node.source());
      }}},
    {EntryUse::kShapeAction,
     {"geometry", [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { read_geometry(r, e, w.entry.geometry); }}},
    {EntryUse::kImage,
     {"image",
      [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { w.entry.image = read_image_name(r, e, w.scene); }}},
    {EntryUse::kImage,
     {"file",
      [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) {
          read_file_path(r, e, w.entry.file);
          w.entry.file_place = place_of(r, e.node.source());
      }}},
};

std::vector<KeyRow<WrittenEntry>> entry_keys() {
    std::vector<KeyRow<WrittenEntry>> keys;
    for (const EntryRow& row : kEntryRows) keys.push_back(row.key);
    return keys;
}

std::vector<std::string> entry_keys_for(std::initializer_list<EntryUse> uses) {
    std::vector<std::string> keys;
    for (const EntryRow& row : kEntryRows) {
        if (std::find(uses.begin(), uses.end(), row.use) != uses.end()) keys.emplace_back(row.key.key);
    }
    return keys;
}

bool contains_any(const toml::table& table, const std::vector<std::string>& keys) {
    return std::any_of(keys.begin(), keys.end(), [&table](const std::string& key) { return table.contains(key); });
}

void check_image_entry(KeyReader& reader, const toml::table& table) {
    require(reader, table, "[[at]] about an image", entry_keys_for({EntryUse::kTime, EntryUse::kImage}));
    for (const std::string& key :
         entry_keys_for({EntryUse::kContainer, EntryUse::kPluginAction, EntryUse::kShapeAction})) {
        if (table.contains(key))
            report(reader, table.get(key)->source(),
                   fmt::format("{} is for a container: give it an [[at]] of its own beside the image's", key));
    }
}

// Checks that the entry has actions that the container supports.
void check_container_entry(KeyReader& reader, const toml::table& table, const TimelineEntry& entry,
                           const SceneDescription& scene) {
    const std::vector<std::string> plugin_actions = entry_keys_for({EntryUse::kPluginAction});
    const std::vector<std::string> shape_actions = entry_keys_for({EntryUse::kShapeAction});
    require(reader, table, "[[at]]", entry_keys_for({EntryUse::kTime, EntryUse::kContainer}));
    if (!contains_any(table, plugin_actions) && !contains_any(table, shape_actions))
        report(reader, table.source(),
               fmt::format("[[at]] does nothing: give it {} or {}; or {} without a container",
                           fmt::join(plugin_actions, ", "), fmt::join(shape_actions, ", "),
                           fmt::join(entry_keys_for({EntryUse::kImage}), " and ")));
    if (entry.container < 0) return;
    const ContainerDescription& container = scene.containers[static_cast<size_t>(entry.container)];
    if (contains_any(table, plugin_actions) && !container.has_plugin && container.look.empty())
        report(reader, table.get("container")->source(),
               fmt::format("container '{}' carries no plug-in, which {} need", container.name,
                           fmt::join(plugin_actions, ", ")));
    if (entry.burst > 0 && !container.look.empty())
        report_at(reader, entry.burst_place,
                  fmt::format("container '{}' has a look: give the burst to one of its layers, by its name '{}.LAYER'",
                              container.name, container.name));
    if (entry.geometry && container.has_plugin)
        report_at(
            reader, entry.geometry->place,
            fmt::format("container '{}' carries a plug-in: give the shape a container of its own", container.name));
}

void check_entry(KeyReader& reader, const toml::table& table, const TimelineEntry& entry,
                 const SceneDescription& scene) {
    if (contains_any(table, entry_keys_for({EntryUse::kImage})))
        check_image_entry(reader, table);
    else
        check_container_entry(reader, table, entry, scene);
}

void read_track_value(KeyReader& reader, const KeyedNode& entry, WrittenKey& written) {
    switch (written.track.property) {
        case TrackProperty::kGeometry:
            read_geometry(reader, entry, written.key.geometry);
            break;
        case TrackProperty::kOpacity:
            read_number(reader, entry, 0.0, 1.0, written.key.value[0]);
            break;
        case TrackProperty::kParameter:
            written.key.setting = {written.track.parameter, false, place_of(reader, entry.node.source())};
            read_value(reader, entry, written.key.setting.value);
            break;
        default:
            read_triple(reader, entry, written.key.value);
    }
}

const KeyRow<WrittenKey> kTrackKeyKeys[] = {
    {"time", [](KeyReader& r, const KeyedNode& e, WrittenKey& w) { read_number(r, e, 0.0, kMaxSeconds, w.key.time); }},
    {"value", read_track_value},
    {"ease",
     [](KeyReader& r, const KeyedNode& e, WrittenKey& w) {
         size_t choice = 0;
         if (read_choice(r, e, {"linear", "smooth", "step"}, choice)) w.key.ease = static_cast<Ease>(choice);
     }},
};

void read_track_keys(KeyReader& reader, const KeyedNode& entry, Track& track) {
    for (const toml::table* table : read_tables(reader, entry)) {
        WrittenKey written{track, {}};
        read_keys(reader, *table, "a key of [[track]]", kTrackKeyKeys, written);
        const TrackKey& key = written.key;
        require(reader, *table, "a key", {"time", "value"});
        if (!track.keys.empty() && key.time <= track.keys.back().time && table->contains("time"))
            report(reader, table->get("time")->source(),
                   fmt::format("keys must be in order of time: {} does not come after {}", key.time,
                               track.keys.back().time));
        track.keys.push_back(key);
    }
    if (track.keys.empty()) report(reader, entry.node.source(), "keys must hold at least one { time, value }");
}

// Property and parameter are before the keys, whose values depend on them.
const KeyRow<WrittenTrack> kTrackKeys[] = {
    {"container", [](KeyReader& r, const KeyedNode& e,
                     WrittenTrack& w) { w.track.container = read_container_name(r, e, w.scene.containers); }},
    {"property",
     [](KeyReader& r, const KeyedNode& e, WrittenTrack& w) {
         size_t choice = 0;
         if (read_choice(r, e, {"position", "rotation", "scale", "geometry", "opacity"}, choice))
             w.track.property = static_cast<TrackProperty>(choice);
     }},
    {"parameter",
     [](KeyReader& r, const KeyedNode& e, WrittenTrack& w) {
         w.track.property = TrackProperty::kParameter;
         read_text(r, e, w.track.parameter);
     }},
    {"keys", [](KeyReader& r, const KeyedNode& e, WrittenTrack& w) { read_track_keys(r, e, w.track); }},
};

// Checks that a container's shape has only one source: its plug-in, its geometry with [[at]] entries, or a track.
void check_shape_track(KeyReader& reader, const toml::table& table, const Track& track, const SceneDescription& scene) {
    if (track.property != TrackProperty::kGeometry || track.container < 0) return;
    const ContainerDescription& container = scene.containers[static_cast<size_t>(track.container)];
    if (container.has_plugin)
        report(reader, table.source(),
               fmt::format("container '{}' carries a plug-in: give the shape a container of its own", container.name));
    if (container.geometry)
        report(reader, table.source(),
               fmt::format("container '{}' has a geometry already: make it the first key of this track instead",
                           container.name));
    for (const TimelineEntry& entry : scene.timeline) {
        if (entry.geometry && entry.container == track.container)
            report_at(reader, entry.geometry->place,
                      fmt::format("container '{}' has a track for its geometry: make this a key of it, with "
                                  "ease = \"step\"",
                                  container.name));
    }
}

// Checks that a parameter is changed either by one track or by [[at]].
void check_parameter_track(KeyReader& reader, const toml::table& table, const Track& track,
                           const SceneDescription& scene) {
    if (track.property != TrackProperty::kParameter) return;
    if (table.contains("property"))
        report(reader, table.get("property")->source(), "property and parameter: give each a [[track]] of its own");
    if (track.container < 0) return;
    const ContainerDescription& container = scene.containers[static_cast<size_t>(track.container)];
    if (!container.has_plugin && container.look.empty())
        report(reader, table.get("container")->source(),
               fmt::format("container '{}' carries no plug-in whose parameters could be set", container.name));
    for (const TimelineEntry& entry : scene.timeline) {
        if (entry.container != track.container) continue;
        for (const ParameterSetting& setting : entry.parameters) {
            if (setting.name == track.parameter)
                report_at(
                    reader, setting.place,
                    fmt::format("container '{}' has a track for '{}': make this a key of it, with ease = \"step\"",
                                container.name, setting.name));
        }
    }
}

}  // namespace

void read_timeline(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    for (const toml::table* table : read_tables(reader, entry)) {
        WrittenEntry written{scene, {}};
        written.entry.place = place_of(reader, table->source());
        read_keys(reader, *table, "[[at]]", entry_keys(), written);
        check_entry(reader, *table, written.entry, scene);
        scene.timeline.push_back(written.entry);
    }
    std::stable_sort(scene.timeline.begin(), scene.timeline.end(),
                     [](const TimelineEntry& a, const TimelineEntry& b) { return a.time < b.time; });
}

void read_tracks(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    for (const toml::table* table : read_tables(reader, entry)) {
        WrittenTrack written{scene, {}};
        read_keys(reader, *table, "[[track]]", kTrackKeys, written);
        require(reader, *table, "[[track]]", {"container", "keys"});
        if (!table->contains("property") && !table->contains("parameter"))
            report(reader, table->source(), "[[track]] needs property or parameter");
        for (const Track& other : scene.tracks) {
            if (other.container == written.track.container && other.property == written.track.property &&
                other.parameter == written.track.parameter && other.container >= 0)
                report(reader, table->source(),
                       fmt::format("container '{}' has a track for this {} already: put all keys into one",
                                   scene.containers[static_cast<size_t>(other.container)].name,
                                   other.property == TrackProperty::kParameter ? "parameter" : "property"));
        }
        check_shape_track(reader, *table, written.track, scene);
        check_parameter_track(reader, *table, written.track, scene);
        scene.tracks.push_back(written.track);
    }
}

void append_timeline_keys(std::vector<std::string>& keys) {
    for (const std::string& key : key_names(entry_keys())) keys.push_back("at." + key);
    for (const std::string& key : key_names(kTrackKeys)) keys.push_back("track." + key);
    for (const std::string& key : key_names(kTrackKeyKeys)) keys.push_back("track.keys." + key);
}

}  // namespace stage
