#include "scene_build.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>

#include "built_in_images.h"
#include "messages.h"
#include "parameter_check.h"
#include "parameter_track.h"
#include "parameter_warnings.h"
#include "plugin_file.h"
#include "scene_rate.h"
#include "stage/names.h"
#include "stage/plugins/instance.h"
#include "texture_variants.h"
#include "timeline.h"

namespace stage {

namespace {

constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;

// The state of a build.
struct Builder {
    SceneDescription scene;
    const std::string& smoke_plugin;
    BuiltScene built;
    std::vector<PluginId> plugins;  // by container index; -1 for a container without a plug-in
    std::map<PluginId, PluginNotes> notes;
    Messages messages;
};

Vector3 vector_of(const Triple& triple) {
    return {triple[0], triple[1], triple[2]};
}

void set_camera(const CameraDescription& description, Camera& camera) {
    camera.position = vector_of(description.position);
    camera.pan_degrees = description.pan;
    camera.tilt_degrees = description.tilt;
    camera.roll_degrees = description.roll;
    camera.field_of_view_degrees = description.field_of_view;
    if (!description.look_at) return;
    const double x = static_cast<double>((*description.look_at)[0]) - description.position[0];
    const double y = static_cast<double>((*description.look_at)[1]) - description.position[1];
    const double z = static_cast<double>((*description.look_at)[2]) - description.position[2];
    camera.pan_degrees = static_cast<float>(std::atan2(-x, -z) * kDegreesPerRadian);
    camera.tilt_degrees = static_cast<float>(std::atan2(y, std::hypot(x, z)) * kDegreesPerRadian);
}

// Time of the first frame, in seconds from the first picture.
double first_time(const SceneDescription& scene) {
    return static_cast<double>(-prewarm_frames(scene)) / scene.frame_rate;
}

void add_images(Builder& builder) {
    builder.built.images = make_image_tracks(builder.scene, builder.messages.errors);
    for (ImageTrack& image : builder.built.images) {
        if (!builder.messages.errors.empty()) return;
        const Result<Done> shown = show_image(*builder.built.stage, image, first_time(builder.scene));
        if (!shown) builder.messages.errors.push_back(shown.error().message);
    }
}

void check_image_name(Builder& builder, const std::string& name, const char* use, const Place& place) {
    if (!is_image_name(builder.scene, name))
        builder.messages.errors.push_back(
            fmt::format("{}: unknown {} '{}': {}", place, use, name, name_hint(name, image_names(builder.scene))));
}

void check_appearances(Builder& builder) {
    for (const ContainerDescription& container : builder.scene.containers) {
        std::vector<std::string> textures = container.more_textures;
        textures.push_back(container.texture);
        for (const std::string& texture : textures)
            if (texture != "none") check_image_name(builder, texture, "texture", container.texture_place);
        if (const auto& light = container.light) check_image_name(builder, light->image, "image", light->image_place);
    }
}

void set_container(Builder& builder, const ContainerDescription& description, Container& container) {
    container.placement = {vector_of(description.position), vector_of(description.rotation),
                           vector_of(description.scale)};
    container.opacity = description.opacity;
    container.appearance.blend = description.blend;
    container.appearance.depth_test = description.depth_test;
    if (description.texture != "none")
        container.appearance.texture_handle = find_image_by_name(*builder.built.stage, description.texture);
    if (const auto& light = description.light)
        container.appearance.light = {find_image_by_name(*builder.built.stage, light->image), light->position,
                                      light->size};
}

void add_containers(Builder& builder) {
    std::vector<int32_t>& handles = builder.built.container_handles;
    for (const ContainerDescription& description : builder.scene.containers) {
        const int32_t parent = description.parent < 0 ? kNoObject : handles[static_cast<size_t>(description.parent)];
        handles.push_back(add_container(*builder.built.stage, description.name, parent));
        Container* container = find_container(*builder.built.stage, handles.back());
        if (container != nullptr)
            set_container(builder, description, *container);
        else
            builder.messages.errors.push_back(description.place + ": there is no room for another container");
    }
}

// Shapes are added before instances, which may access them in PLUGIN_INIT_FUNCTION.
void add_shapes(Builder& builder) {
    builder.built.shapes = build_shape_tracks(builder.scene, builder.messages);
    for (ShapeTrack& shape : builder.built.shapes)
        show_shape(*builder.built.stage, builder.built.container_handles[static_cast<size_t>(shape.container)], shape,
                   first_time(builder.scene));
}

Result<PluginId> load_plugin_of(Builder& builder, const ContainerDescription& description) {
    const Result<std::string> file =
        find_plugin_file(description.plugin, builder.smoke_plugin, builder.scene.file.parent_path());
    if (!file) return file.error();
    return load_plugin(*builder.built.stage, *file);
}

void load_plugins(Builder& builder) {
    for (const ContainerDescription& description : builder.scene.containers) {
        builder.plugins.push_back(-1);
        if (!description.has_plugin) continue;
        const Result<PluginId> loaded = load_plugin_of(builder, description);
        if (loaded) {
            builder.plugins.back() = *loaded;
            check_settings(builder.scene, plugin(*loaded), description.parameters, builder.messages.errors);
        } else {
            builder.messages.errors.push_back(description.plugin_place + ": " + loaded.error().message);
        }
    }
}

void check_burst(Builder& builder, const TimelineEntry& entry, PluginId id) {
    if (entry.burst == 0) return;
    const Plugin& owner = plugin(id);
    const std::optional<BirthNotes>& births = builder.notes[id].births;
    if (!births) {
        builder.messages.errors.push_back(
            fmt::format("{}: the notes beside {} do not say which of its parameters births depend on: it has no bursts",
                        entry.burst_place, owner.name));
    } else if (const double most = find_parameter(owner, births->number)->maximum; entry.burst > most) {
        builder.messages.errors.push_back(
            fmt::format("{}: burst must be a whole number from 1 to {}, not {}", entry.burst_place, most, entry.burst));
    }
}

void check_timeline(Builder& builder) {
    for (const TimelineEntry& entry : builder.scene.timeline) {
        if (entry.container < 0) continue;
        const PluginId id = builder.plugins[static_cast<size_t>(entry.container)];
        if (id < 0) continue;
        check_settings(builder.scene, plugin(id), entry.parameters, builder.messages.errors);
        check_button(plugin(id), entry.press, entry.press_place, builder.messages.errors);
        check_burst(builder, entry, id);
    }
}

void check_tracks(Builder& builder) {
    for (const Track& track : builder.scene.tracks) {
        const PluginId id = builder.plugins[static_cast<size_t>(track.container)];
        if (id < 0 || track.property != TrackProperty::kParameter) continue;
        const size_t errors_before = builder.messages.errors.size();
        for (const TrackKey& key : track.keys)
            check_settings(builder.scene, plugin(id), {key.setting}, builder.messages.errors);
        if (builder.messages.errors.size() == errors_before)
            check_blends(track, plugin(id), builder.notes[id], builder.messages.errors);
    }
}

void read_notes(Builder& builder) {
    for (const PluginId id : builder.plugins) {
        if (id < 0 || builder.notes.contains(id)) continue;
        Result<PluginNotes> notes = read_plugin_notes(plugin(id));
        if (!notes) builder.messages.errors.push_back(notes.error().message);
        builder.notes[id] = notes ? std::move(*notes) : PluginNotes{};
    }
}

// All settings must have passed check_settings.
void warn_of_parameters(Builder& builder) {
    for (size_t i = 0; i < builder.plugins.size(); ++i) {
        if (const PluginId id = builder.plugins[i]; id >= 0)
            warn_of_settings(builder.scene, static_cast<int32_t>(i), plugin(id), builder.notes[id],
                             builder.messages.warnings);
    }
}

// All settings must have passed check_settings.
void convert_rates(Builder& builder) {
    for (size_t i = 0; i < builder.plugins.size(); ++i) {
        if (const PluginId id = builder.plugins[i]; id >= 0)
            convert_container_rate(builder.scene, static_cast<int32_t>(i), plugin(id), builder.notes[id],
                                   builder.messages.warnings);
    }
}

bool has_burst(const SceneDescription& scene, size_t container) {
    return std::any_of(scene.timeline.begin(), scene.timeline.end(), [&](const TimelineEntry& entry) {
        return entry.burst > 0 && entry.container == static_cast<int32_t>(container);
    });
}

void add_instance_of(Builder& builder, size_t container) {
    Stage& stage = *builder.built.stage;
    const ContainerDescription& description = builder.scene.containers[container];
    const int32_t handle = builder.built.container_handles[container];
    const PluginId id = builder.plugins[container];
    const auto fail = [&](const Error& error) {
        builder.messages.errors.push_back(description.place + ": " + error.message);
    };
    ParameterValues values;
    for (const ParameterSetting& setting : description.parameters) values.emplace_back(setting.name, setting.value);
    const Result<int32_t> added = add_instance(stage, handle, id, values);
    if (!added) return fail(added.error());
    if (!has_burst(builder.scene, container)) return;
    Result<BurstTarget> target = make_burst_target(stage, handle, *builder.notes[id].births);
    if (!target) return fail(target.error());
    builder.built.bursts.push_back(std::move(*target));
}

void add_instances(Builder& builder) {
    for (size_t i = 0; i < builder.scene.containers.size(); ++i) {
        if (builder.plugins[i] >= 0) add_instance_of(builder, i);
    }
}

}  // namespace

Result<BuiltScene> build_scene(const SceneDescription& description, const std::string& smoke_plugin) {
    Result<SceneDescription> scene = with_built_in_images(description);
    if (!scene) return scene.error();
    StageOptions options;
    options.seed = description.seed;
    options.frame_period_seconds = 1.0 / description.frame_rate;
    Builder builder{std::move(*scene), smoke_plugin, {{}, make_stage(options), {}, {}, {}, {}, {}}, {}, {}, {}};
    builder.built.stage->clock.frame = -prewarm_frames(description);
    set_camera(description.camera, builder.built.stage->camera);
    add_images(builder);
    load_plugins(builder);
    read_notes(builder);
    check_appearances(builder);
    check_timeline(builder);
    check_tracks(builder);
    if (builder.messages.errors.empty()) warn_of_parameters(builder);
    if (builder.messages.errors.empty()) convert_rates(builder);
    expand_texture_variants(builder.scene, builder.plugins, builder.notes, builder.messages.errors);
    add_containers(builder);
    if (builder.messages.errors.empty()) add_shapes(builder);
    if (builder.messages.errors.empty()) add_instances(builder);
    if (!builder.messages.errors.empty()) return error_of(builder.messages.errors);
    builder.built.description = std::move(builder.scene);
    builder.built.warnings = std::move(builder.messages.warnings);
    builder.built.plugins = std::move(builder.plugins);
    builder.built.notes = std::move(builder.notes);
    return std::move(builder.built);
}

}  // namespace stage
