#include "scene_run.h"

#include "parameter_track.h"
#include "stage/plugins/frames.h"
#include "stage/plugins/instance.h"
#include "stage/plugins/parameters.h"
#include "timeline.h"

namespace stage {

namespace {

Result<Done> apply_entry(SceneRun& run, const TimelineEntry& entry) {
    Stage& stage = *run.built.stage;
    if (entry.container < 0) return Done{};  // entries of images are applied by show_image
    const int32_t handle = run.built.container_handles[static_cast<size_t>(entry.container)];
    for (const ParameterSetting& setting : entry.parameters) {
        const Result<Done> set = set_parameter(stage, handle, setting.name, setting.value);
        if (!set) return Error{setting.place + ": " + set.error().message};
    }
    for (BurstTarget& target : run.built.bursts) {
        if (target.container_handle != handle || entry.burst == 0) continue;
        target.due += entry.burst;
        target.place = entry.burst_place;
    }
    if (entry.press.empty()) return Done{};
    const Result<Done> pressed = press_button(stage, handle, entry.press);
    if (!pressed) return Error{entry.press_place + ": " + pressed.error().message};
    return Done{};
}

Result<Done> apply_timeline(SceneRun& run, int64_t frame) {
    const SceneDescription& scene = run.built.description;
    while (run.next_entry < scene.timeline.size() &&
           first_frame_from(scene, scene.timeline[run.next_entry].time) <= frame) {
        if (Result<Done> applied = apply_entry(run, scene.timeline[run.next_entry]); !applied) return applied;
        ++run.next_entry;
    }
    return Done{};
}

Result<Done> set_tracked(Stage& stage, int32_t container_handle, const Track& track, double seconds) {
    const Instance* instance = instance_of(stage, container_handle);
    if (instance == nullptr) return Done{};
    const ParameterInfo& parameter = *find_parameter(plugin(instance->plugin), track.parameter);
    const Result<Done> set =
        set_parameter(stage, container_handle, track.parameter, parameter_value(track, parameter, seconds));
    if (!set) return Error{track.keys.front().setting.place + ": " + set.error().message};
    return Done{};
}

void move_container(Container& container, const Track& track, double seconds) {
    const Triple value = track_value(track, seconds);
    if (track.property == TrackProperty::kOpacity) {
        container.opacity = value[0];
        return;
    }
    Vector3& target = track.property == TrackProperty::kPosition   ? container.placement.position
                      : track.property == TrackProperty::kRotation ? container.placement.rotation_degrees
                                                                   : container.placement.scale;
    target = {value[0], value[1], value[2]};
}

// Applies all tracks except those of shapes.
Result<Done> apply_tracks(SceneRun& run, double seconds) {
    Stage& stage = *run.built.stage;
    for (const Track& track : run.built.description.tracks) {
        const int32_t handle = run.built.container_handles[static_cast<size_t>(track.container)];
        if (track.property == TrackProperty::kParameter) {
            if (Result<Done> set = set_tracked(stage, handle, track, seconds); !set) return set;
        } else if (Container* container = find_container(stage, handle);
                   container != nullptr && track.property != TrackProperty::kGeometry) {
            move_container(*container, track, seconds);
        }
    }
    return Done{};
}

Result<Done> show_moment(SceneRun& run, double seconds) {
    BuiltScene& built = run.built;
    if (Result<Done> applied = apply_tracks(run, seconds); !applied) return applied;
    for (ShapeTrack& shape : built.shapes)
        show_shape(*built.stage, built.container_handles[static_cast<size_t>(shape.container)], shape, seconds);
    for (ImageTrack& image : built.images) {
        if (Result<Done> shown = show_image(*built.stage, image, seconds); !shown) return shown;
    }
    return Done{};
}

}  // namespace

SceneRun start_run(BuiltScene built) {
    const int64_t first = -prewarm_frames(built.description);
    return {std::move(built), first, 0};
}

Result<Done> run_until(SceneRun& run, int64_t frame) {
    for (; run.next_frame <= frame; ++run.next_frame) {
        const double seconds = static_cast<double>(run.next_frame) / run.built.description.frame_rate;
        if (Result<Done> applied = apply_timeline(run, run.next_frame); !applied) return applied;
        if (Result<Done> shown = show_moment(run, seconds); !shown) return shown;
        for (BurstTarget& target : run.built.bursts) {
            if (Result<Done> begun = begin_burst_frame(*run.built.stage, target); !begun) return begun;
        }
        run_frame(*run.built.stage);
        for (BurstTarget& target : run.built.bursts) end_burst_frame(*run.built.stage, target);
    }
    return Done{};
}

}  // namespace stage
