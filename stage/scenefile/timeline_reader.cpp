#include "stage/scenefile/timeline_reader.h"

#include <fmt/format.h>

#include <algorithm>

#include "stage/scenefile/container_reader.h"

namespace stage {

namespace {

constexpr double kLatest = 86400.0;  // seconds: a day
constexpr double kLargest = 1e9;

// The rows need the containers beside what they fill.
struct WrittenEntry {
    const std::vector<ContainerDescription>& containers;
    TimelineEntry entry;
};

struct WrittenTrack {
    const std::vector<ContainerDescription>& containers;
    Track track;
};

const KeyRow<WrittenEntry> kEntryKeys[] = {
    {"time", [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { read_number(r, e, 0.0, kLatest, w.entry.time); }},
    {"container",
     [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) {
         w.entry.container = read_container_name(r, e, w.containers);
         if (w.entry.container >= 0 && !w.containers[static_cast<size_t>(w.entry.container)].has_plugin)
             report(r, e.node.source(),
                    fmt::format("container '{}' carries no plug-in whose parameters could be set",
                                w.containers[static_cast<size_t>(w.entry.container)].name));
     }},
    {"parameters", [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) { read_settings(r, e, w.entry.parameters); }},
    {"press",
     [](KeyReader& r, const KeyedNode& e, WrittenEntry& w) {
         read_text(r, e, w.entry.press);
         w.entry.press_place = place_of(r, e.node.source());
     }},
};

const KeyRow<TrackKey> kTrackKeyKeys[] = {
    {"time", [](KeyReader& r, const KeyedNode& e, TrackKey& k) { read_number(r, e, 0.0, kLatest, k.time); }},
    {"value", [](KeyReader& r, const KeyedNode& e, TrackKey& k) { read_triple(r, e, -kLargest, kLargest, k.value); }},
    {"ease",
     [](KeyReader& r, const KeyedNode& e, TrackKey& k) {
         size_t choice = 0;
         if (read_choice(r, e, {"linear", "smooth"}, choice)) k.ease = static_cast<Ease>(choice);
     }},
};

void read_track_keys(KeyReader& reader, const KeyedNode& entry, Track& track) {
    for (const toml::table* table : read_tables(reader, entry)) {
        TrackKey key;
        read_keys(reader, *table, "a key of [[track]]", kTrackKeyKeys, key);
        for (const char* needed : {"time", "value"}) {
            if (!table->contains(needed)) report(reader, table->source(), fmt::format("a key needs {}", needed));
        }
        if (!track.keys.empty() && key.time <= track.keys.back().time && table->contains("time"))
            report(reader, table->get("time")->source(),
                   fmt::format("keys must be in order of time: {} does not come after {}", key.time,
                               track.keys.back().time));
        track.keys.push_back(key);
    }
    if (track.keys.empty()) report(reader, entry.node.source(), "keys must hold at least one { time, value }");
}

const KeyRow<WrittenTrack> kTrackKeys[] = {
    {"container", [](KeyReader& r, const KeyedNode& e,
                     WrittenTrack& w) { w.track.container = read_container_name(r, e, w.containers); }},
    {"property",
     [](KeyReader& r, const KeyedNode& e, WrittenTrack& w) {
         size_t choice = 0;
         if (read_choice(r, e, {"position", "rotation", "scale"}, choice))
             w.track.property = static_cast<TrackProperty>(choice);
     }},
    {"keys", [](KeyReader& r, const KeyedNode& e, WrittenTrack& w) { read_track_keys(r, e, w.track); }},
};

void require(KeyReader& reader, const toml::table& table, const char* section,
             std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        if (!table.contains(key)) report(reader, table.source(), fmt::format("{} needs {}", section, key));
    }
}

}  // namespace

void read_timeline(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    for (const toml::table* table : read_tables(reader, entry)) {
        WrittenEntry written{scene.containers, {}};
        written.entry.place = place_of(reader, table->source());
        read_keys(reader, *table, "[[at]]", kEntryKeys, written);
        require(reader, *table, "[[at]]", {"time", "container"});
        if (!table->contains("parameters") && !table->contains("press"))
            report(reader, table->source(), "[[at]] does nothing: give it parameters or press");
        scene.timeline.push_back(written.entry);
    }
    std::stable_sort(scene.timeline.begin(), scene.timeline.end(),
                     [](const TimelineEntry& a, const TimelineEntry& b) { return a.time < b.time; });
}

void read_tracks(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    for (const toml::table* table : read_tables(reader, entry)) {
        WrittenTrack written{scene.containers, {}};
        read_keys(reader, *table, "[[track]]", kTrackKeys, written);
        require(reader, *table, "[[track]]", {"container", "property", "keys"});
        for (const Track& other : scene.tracks) {
            if (other.container == written.track.container && other.property == written.track.property &&
                other.container >= 0)
                report(reader, table->source(),
                       fmt::format("container '{}' has a track for this property already: put all keys into one",
                                   scene.containers[static_cast<size_t>(other.container)].name));
        }
        scene.tracks.push_back(written.track);
    }
}

void append_timeline_keys(std::vector<std::string>& keys) {
    for (const std::string& key : key_names(kEntryKeys)) keys.push_back("at." + key);
    for (const std::string& key : key_names(kTrackKeys)) keys.push_back("track." + key);
    for (const std::string& key : key_names(kTrackKeyKeys)) keys.push_back("track.keys." + key);
}

}  // namespace stage
