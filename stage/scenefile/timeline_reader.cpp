#include "timeline_reader.h"

#include <fmt/format.h>

#include <algorithm>

#include "container_reader.h"
#include "geometry_reader.h"
#include "image_reader.h"

namespace stage {

namespace {

constexpr double kLatest = 86400.0;  // seconds: a day
constexpr double kLargest = 1e9;

// The rows need the scene beside what they fill.
struct WrittenEntry {
    const SceneDescription& scene;
    TimelineEntry entry;
};

struct WrittenTrack {
    const SceneDescription& scene;
    Track track;
};

struct WrittenKey {
    TrackProperty property;
    TrackKey key;
};

void require(KeyReader& reader, const toml::table& table, const char* section,
             std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        if (!table.contains(key)) report(reader, table.source(), fmt::format("{} needs {}", section, key));
    }
}

const KeyRow<WrittenEntry> kEntryKeys[] = {
    {"time", [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { read_number(r, e, 0.0, kLatest, w.entry.time); }},
    {"container", [](KeyReader& r, const KeyedNode& e,
                     WrittenEntry& w) { w.entry.container = read_container_name(r, e, w.scene.containers); }},
    {"parameters", [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { read_settings(r, e, w.entry.parameters); }},
    {"press",
     [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) {
         read_text(r, e, w.entry.press);
         w.entry.press_place = place_of(r, e.node.source());
     }},
    {"geometry", [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { read_geometry(r, e, w.entry.geometry); }},
    {"image",
     [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { w.entry.image = read_image_name(r, e, w.scene); }},
    {"file",
     [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) {
         read_file_path(r, e, w.entry.file);
         w.entry.file_place = place_of(r, e.node.source());
     }},
};

// What an entry about a container may do depends on what the container carries.
void check_entry_of_container(KeyReader& reader, const toml::table& table, const ContainerDescription& container) {
    const bool sets = table.contains("parameters") || table.contains("press");
    if (sets && !container.has_plugin)
        report(reader, table.get("container")->source(),
               fmt::format("container '{}' carries no plug-in whose parameters could be set", container.name));
    if (table.contains("geometry") && container.has_plugin)
        report(reader, table.get("geometry")->source(),
               fmt::format("container '{}' carries a plug-in: give the shape a container of its own", container.name));
}

void check_entry(KeyReader& reader, const toml::table& table, const TimelineEntry& entry,
                 const SceneDescription& scene) {
    if (table.contains("image") || table.contains("file")) {
        require(reader, table, "[[at]] about an image", {"time", "image", "file"});
        for (const char* key : {"container", "parameters", "press", "geometry"}) {
            if (table.contains(key))
                report(reader, table.get(key)->source(),
                       fmt::format("{} is for a container: give it an [[at]] of its own beside the image's", key));
        }
        return;
    }
    require(reader, table, "[[at]]", {"time", "container"});
    if (!table.contains("parameters") && !table.contains("press") && !table.contains("geometry"))
        report(reader, table.source(), "[[at]] does nothing: give it parameters, press, geometry, or image and file");
    if (entry.container >= 0)
        check_entry_of_container(reader, table, scene.containers[static_cast<size_t>(entry.container)]);
}

const KeyRow<WrittenKey> kTrackKeyKeys[] = {
    {"time", [](KeyReader& r, const KeyedNode& e, WrittenKey& w) { read_number(r, e, 0.0, kLatest, w.key.time); }},
    {"value",
     [](KeyReader& r, const KeyedNode& e, WrittenKey& w) {
         if (w.property == TrackProperty::kGeometry)
             read_geometry(r, e, w.key.geometry);
         else
             read_triple(r, e, -kLargest, kLargest, w.key.value);
     }},
    {"ease",
     [](KeyReader& r, const KeyedNode& e, WrittenKey& w) {
         size_t choice = 0;
         if (read_choice(r, e, {"linear", "smooth", "step"}, choice)) w.key.ease = static_cast<Ease>(choice);
     }},
};

void read_track_keys(KeyReader& reader, const KeyedNode& entry, Track& track) {
    for (const toml::table* table : read_tables(reader, entry)) {
        WrittenKey written{track.property, {}};
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

// The property stands before the keys, whose values depend on it.
const KeyRow<WrittenTrack> kTrackKeys[] = {
    {"container", [](KeyReader& r, const KeyedNode& e,
                     WrittenTrack& w) { w.track.container = read_container_name(r, e, w.scene.containers); }},
    {"property",
     [](KeyReader& r, const KeyedNode& e, WrittenTrack& w) {
         size_t choice = 0;
         if (read_choice(r, e, {"position", "rotation", "scale", "geometry"}, choice))
             w.track.property = static_cast<TrackProperty>(choice);
     }},
    {"keys", [](KeyReader& r, const KeyedNode& e, WrittenTrack& w) { read_track_keys(r, e, w.track); }},
};

// A container's shape comes from one place: its plug-in, its geometry with what [[at]] makes of it, or a track.
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

}  // namespace

void read_timeline(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    for (const toml::table* table : read_tables(reader, entry)) {
        WrittenEntry written{scene, {}};
        written.entry.place = place_of(reader, table->source());
        read_keys(reader, *table, "[[at]]", kEntryKeys, written);
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
        require(reader, *table, "[[track]]", {"container", "property", "keys"});
        for (const Track& other : scene.tracks) {
            if (other.container == written.track.container && other.property == written.track.property &&
                other.container >= 0)
                report(reader, table->source(),
                       fmt::format("container '{}' has a track for this property already: put all keys into one",
                                   scene.containers[static_cast<size_t>(other.container)].name));
        }
        check_shape_track(reader, *table, written.track, scene);
        scene.tracks.push_back(written.track);
    }
}

void append_timeline_keys(std::vector<std::string>& keys) {
    for (const std::string& key : key_names(kEntryKeys)) keys.push_back("at." + key);
    for (const std::string& key : key_names(kTrackKeys)) keys.push_back("track." + key);
    for (const std::string& key : key_names(kTrackKeyKeys)) keys.push_back("track.keys." + key);
}

}  // namespace stage
