#include "rig.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <tovu/opengl.h>
#include <tovu/spawn_requests.h>
#include "child.h"
#include "gl_watch.h"
#include "stage/call_log.h"
#include "stage/plugins/frames.h"
#include "watch.h"

namespace tovu::validate {
namespace {

using stage::ParameterInfo;
using stage::ParameterKind;
using stage::ParameterValue;
using stage::ParameterValues;

constexpr int kDeepestRequest = 16;

std::vector<stage::Mesh> outline_meshes() {
    return {{{{-50, -40, 0}, {60, -45, 2}, {70, 40, 0}, {0, 80, -3}, {-55, 35, 0}}},
            {{{-10, -10, 5}, {15, -12, 5}, {2, 20, 5}}}};
}

void add_images(stage::Stage& stage) {
    std::vector<uint8_t> pixels(7 * 5 * 3);
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i * 37 % 256);
    stage::add_image(stage, "picture", 7, 5, GL_RGB, pixels);
    pixels.resize(4 * 4);
    stage::add_image(stage, "mask", 4, 4, GL_LUMINANCE, pixels);
}

int32_t dispatch_in(Rig& rig, int32_t geometry, int32_t request, void* data, void* reply) {
    if (geometry == rig.smoke.geometry_handle && stage::find_geometry(*watch().stage, geometry)) {
        answer_request(rig.smoke, request, data, reply);
        return 1;
    }
    if (rig.request_depth >= kDeepestRequest) {
        fail("dispatch.quiet", fmt::format("requests nest {} deep", kDeepestRequest),
             "send no request from PLUGIN_DISPATCHER_CALLBACK that can come back");
        return 0;
    }
    ++rig.request_depth;
    // The Stage disables an override while it runs. Set again, so that nested requests come here too.
    stage::Overrides& overrides = watch().stage->overrides;
    overrides.geom_dispatcher = [&rig](auto... arguments) { return dispatch_in(rig, arguments...); };
    const stage::Geometry* found = stage::find_geometry(*watch().stage, geometry);
    int32_t taken = 0;
    if (found && found->instance)
        taken = stage::dispatch(*watch().stage, found->container_handle, request, data, reply);
    else if (!found && geometry != -1)
        fail(request == TOVU_REQUEST_ATTACH || request == TOVU_REQUEST_DETACH ? "consumer.manners" : "life.cycle",
             fmt::format("sent a request to {}, which is no geometry", geometry),
             "test the handle with _api__object_valid where it is used");
    --rig.request_depth;
    return taken;
}

void check_box(const float (&low)[3], const float (&high)[3]) {
    constexpr float kEmpty = 1e7f;
    bool is_empty = true;
    bool is_right = true;
    for (int i = 0; i < 3; ++i) {
        is_empty = is_empty && low[i] == kEmpty && high[i] == -kEmpty;
        is_right = is_right && std::isfinite(low[i]) && std::isfinite(high[i]) && low[i] <= high[i];
    }
    if (is_right) return;
    // Correct for a smoke to which a consumer is attached.
    if (is_empty && watch().during == "while a consumer is attached") return;
    fail("box.finite",
         fmt::format("sent the bounding box ({}, {}, {}) to ({}, {}, {})", low[0], low[1], low[2], high[0], high[1],
                     high[2]),
         "finite numbers, each lower one at most the upper one");
}

void watch_boxes(stage::Stage& stage) {
    stage.overrides.container_set_bounding_box = [](int32_t container, float x, float y, float z, float to_x,
                                                    float to_y, float to_z) {
        check_box({x, y, z}, {to_x, to_y, to_z});
        _api__container_set_bounding_box(container, x, y, z, to_x, to_y, to_z);
    };
}

template <class Number>
Number one_of(Rig& rig, std::initializer_list<Number> numbers) {
    return numbers.begin()[rig.random() % numbers.size()];
}

int try_int(Rig& rig, const ParameterInfo& parameter) {
    const auto low = static_cast<int64_t>(parameter.minimum);
    const auto high = static_cast<int64_t>(parameter.maximum);
    const int64_t near = std::clamp(static_cast<int64_t>(rig.random() % 200), low, high);
    const int64_t initial = std::get<int>(parameter.initial);
    if (rig.random() % 8 == 0) return static_cast<int>(high);
    return static_cast<int>(one_of(rig, {low, near, near, initial, std::min(high, low + 1)}));
}

double try_float(Rig& rig, const ParameterInfo& parameter) {
    const double share = static_cast<double>(rig.random() % 1001) / 1000;
    const double reach = one_of(rig, {1.0, 10.0, 100.0});
    const double near = std::clamp(reach * share, parameter.minimum, parameter.maximum);
    const double initial = std::get<double>(parameter.initial);
    if (rig.random() % 8 == 0) return parameter.maximum;
    return one_of(rig, {parameter.minimum, near, near, near, initial});
}

std::string try_text(Rig& rig, const ParameterInfo& parameter) {
    const std::string initial = std::get<std::string>(parameter.initial);
    std::string text;
    if (parameter.kind == ParameterKind::kContainer && rig.keeps_to_itself)
        text = one_of<const char*>(rig, {"outline", "outline", "", "nobody"});
    else if (parameter.kind == ParameterKind::kContainer)
        text = one_of<const char*>(rig, {"outline", "outline", "", "nobody", "#1", "#99999", "smoke"});
    else if (parameter.kind == ParameterKind::kImage)
        text = one_of<const char*>(rig, {"picture", "picture", "mask", "", "nobody"});
    else
        text = one_of<const char*>(
            rig, {"", "0.0 0.5 1.0 1.0", "Gr\u00FC\u00DFe, \u4E16\u754C", "a text of some words", "7"});
    if (parameter.kind == ParameterKind::kString && rig.random() % 4 == 0) text = initial;
    if (text.size() > static_cast<size_t>(parameter.max_length)) text.resize(static_cast<size_t>(parameter.max_length));
    return text;
}

ParameterValue try_value(Rig& rig, const ParameterInfo& parameter) {
    switch (parameter.kind) {
        case ParameterKind::kInt:
            return try_int(rig, parameter);
        case ParameterKind::kFloat:
            return try_float(rig, parameter);
        case ParameterKind::kBool:
            return rig.random() % 2 == 0;
        case ParameterKind::kRadio:
            return static_cast<int>(rig.random() % parameter.choices.size());
        default:
            return try_text(rig, parameter);
    }
}

/// Changes the placement of the carrier, the camera and the clock.
void change_scene(Rig& rig, int number) {
    stage::Container& carrier = *stage::find_container(*rig.stage, rig.carrier);
    const auto step = static_cast<float>(number);
    carrier.placement.position = {3 * step, -step, 2};
    carrier.placement.rotation_degrees = {10 * step, 5, -7 * step};
    carrier.placement.scale = {1 + 0.1f * step, 1, 2};
    rig.stage->camera.pan_degrees = 15 * step;
    rig.stage->clock.on_air = number % 2 == 1;
    rig.stage->clock.post_recording = number % 3 == 2;
}

/// Removes the container and the image that parameters name, and later adds them with other handles.
void remove_or_restore_named(Rig& rig, int number) {
    stage::Stage& stage = *rig.stage;
    if (number == 3) {
        stage::remove_container(stage, rig.outline_container);
        stage::remove_image(stage, stage::find_image_by_name(stage, "picture"));
    }
    if (number == 4) {
        rig.outline_container = stage::add_container(stage, "outline");
        stage::set_mesh_geometry(stage, rig.outline_container, outline_meshes());
        stage::remove_image(stage, stage::find_image_by_name(stage, "mask"));
        add_images(stage);
    }
}

}  // namespace

stage::MemoryOptions wide_memory() {
    stage::MemoryOptions memory;
    memory.fenced = true;
    memory.room_bytes = 16384;
    return memory;
}

std::unique_ptr<Rig> make_rig(const Subject& subject, const stage::MemoryOptions& memory) {
    auto rig = std::make_unique<Rig>();
    rig->subject = &subject;
    rig->random.seed(subject.seed);
    stage::StageOptions options;
    options.seed = subject.seed;
    options.memory = memory;
    rig->stage = stage::make_stage(options);
    watch().regions.clear();
    watch_stage(*rig->stage);
    watch_opengl();
    {
        const RunningCode running("PLUGIN_INIT");
        const auto loaded = stage::load_plugin(*rig->stage, subject.path);
        if (!loaded) throw std::runtime_error(loaded.error().message);
        rig->plugin = *loaded;
    }
    note_library(*watch().outcome, reinterpret_cast<const void*>(plugin_of(*rig).entry_points.init));

    rig->outline_container = stage::add_container(*rig->stage, "outline");
    stage::set_mesh_geometry(*rig->stage, rig->outline_container, outline_meshes());
    add_images(*rig->stage);
    make_model_smoke(rig->smoke, stage::add_container(*rig->stage, "smoke"));
    rig->carrier = stage::add_container(*rig->stage, "subject");
    rig->other_carrier = stage::add_container(*rig->stage, "other");
    rig->stage->overrides.geom_dispatcher = [raw = rig.get()](auto... arguments) {
        return dispatch_in(*raw, arguments...);
    };
    // The geometry of the model smoke has no mesh access, as that of a plug-in.
    rig->stage->overrides.get_geom_geomod = [raw = rig.get()](int32_t geometry, int32_t kind, int32_t detail,
                                                              int32_t* mesh_access) {
        if (geometry != raw->smoke.geometry_handle) _api__get_geom_geomod(geometry, kind, detail, mesh_access);
    };
    watch_boxes(*rig->stage);
    watch().on_return.push_back([raw = rig.get()](const stage::RunningCall& call) {
        check_records(raw->smoke);
        if (call.entry_point == std::string_view("PLUGIN_NEW_GEOM")) check_claims(raw->smoke);
    });
    return rig;
}

Rig::~Rig() {
    stage.reset();
    watch().stage = nullptr;
    watch().regions.clear();
    watch().on_entry.clear();
    watch().on_return.clear();
}

const stage::Plugin& plugin_of(const Rig& rig) {
    return stage::plugin(rig.plugin);
}

void add_instance(Rig& rig, int32_t container, const ParameterValues& values) {
    const auto added = stage::add_instance(*rig.stage, container, rig.plugin, values);
    if (!added) throw std::runtime_error(added.error().message);
}

void run_frame(Rig& rig, int32_t retraces) {
    stage::advance_frame(*rig.stage, retraces);
    step_model_smoke(rig.smoke);
    stage::new_frame(*rig.stage);
}

void draw(Rig& rig, int32_t container, bool is_reduced, float opacity) {
    expect_reduced_pass(is_reduced);
    stage::call_render(*rig.stage, container, is_reduced ? 1 : 0, opacity);
}

ParameterValues values_to_try(Rig& rig, int number) {
    ParameterValues values;
    for (const ParameterInfo& parameter : plugin_of(rig).parameters) {
        if (number > 0)
            values.emplace_back(parameter.name, try_value(rig, parameter));
        else if (parameter.kind == ParameterKind::kContainer)
            values.emplace_back(parameter.name, "outline");
        else if (parameter.kind == ParameterKind::kImage)
            values.emplace_back(parameter.name, "picture");
        else
            values.emplace_back(parameter.name, parameter.initial);
    }
    return values;
}

std::vector<const ParameterInfo*> container_parameters(const Rig& rig) {
    std::vector<const ParameterInfo*> found;
    for (const ParameterInfo& parameter : plugin_of(rig).parameters)
        if (parameter.kind == ParameterKind::kContainer) found.push_back(&parameter);
    return found;
}

ParameterValues values_with_container(const Rig& rig, size_t position, const std::string& name) {
    ParameterValues values;
    for (const ParameterInfo& parameter : plugin_of(rig).parameters)
        if (parameter.kind == ParameterKind::kImage) values.emplace_back(parameter.name, "picture");
    const auto containers = container_parameters(rig);
    for (size_t i = 0; i < containers.size(); ++i)
        values.emplace_back(containers[i]->name, i == position ? name : std::string("outline"));
    return values;
}

void set_values(Rig& rig, int32_t container, const ParameterValues& values, bool notify) {
    for (const auto& [name, value] : values) {
        const auto set = stage::set_parameter(*rig.stage, container, name, value, {notify});
        if (!set) throw std::runtime_error(set.error().message);
    }
}

void press_all_buttons(Rig& rig, int32_t container) {
    for (const stage::PushButton& button : plugin_of(rig).buttons)
        stage::execute_action(*rig.stage, container, button.action);
}

std::vector<ParameterValues> limits_to_try(const Rig& rig, size_t most, bool with_numbers) {
    std::vector<ParameterValues> all;
    const auto add = [&](const ParameterInfo& parameter, const ParameterValue& value) {
        if (value != parameter.initial) all.push_back({{parameter.name, value}});
    };
    for (const ParameterInfo& parameter : plugin_of(rig).parameters) {
        const bool is_number = parameter.kind == ParameterKind::kInt || parameter.kind == ParameterKind::kFloat;
        for (const double limit : {parameter.minimum, parameter.maximum}) {
            if (!with_numbers || !is_number || !std::isfinite(limit)) continue;
            if (parameter.kind == ParameterKind::kInt)
                add(parameter, static_cast<int>(limit));
            else
                add(parameter, limit);
        }
        if (parameter.kind == ParameterKind::kBool) add(parameter, !std::get<bool>(parameter.initial));
        for (size_t i = 0; i < parameter.choices.size(); ++i) add(parameter, static_cast<int>(i));
    }
    std::vector<ParameterValues> some;
    const size_t step = all.size() / most + 1;
    for (size_t i = 0; i < all.size(); i += step) some.push_back(all[i]);
    return some;
}

void send_requests(Rig& rig) {
    constexpr std::pair<int32_t, const char*> kRequests[] = {{TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, "'SPWN'"},
                                                             {TOVU_REQUEST_NEW_SPAWN_POINT, "'NEWP'"},
                                                             {TOVU_REQUEST_IS_INSIDE, "'ISIN'"},
                                                             {INT32_C(0x51554954), "'QUIT'"}};
    for (const auto& [request, name] : kRequests) {
        float point[3] = {1, 2, 3};
        int32_t reply[8] = {};
        stage::dispatch(*rig.stage, rig.carrier, request, point, reply);
        stage::record_call("answer", name, reply[0], point[0], point[1], point[2]);
    }
}

/// Sets one parameter at a time to the ends of its range, all others to their defaults.
void try_limits(Rig& rig) {
    set_values(rig, rig.carrier, values_to_try(rig, 0), true);
    for (const ParameterValues& values : limits_to_try(rig, 200)) {
        const auto& [name, value] = values.front();
        set_values(rig, rig.carrier, values, true);
        run_frame(rig);
        draw(rig, rig.carrier);
        set_values(rig, rig.carrier, {{name, stage::find_parameter(plugin_of(rig), name)->initial}}, true);
    }
}

void tour(Rig& rig, const TourOptions& options) {
    add_instance(rig, rig.carrier);
    for (int setting = 0; setting < options.settings; ++setting) {
        if (setting > 0) set_values(rig, rig.carrier, values_to_try(rig, setting - 1), setting % 2 == 1);
        change_scene(rig, setting);
        if (options.vanishing) remove_or_restore_named(rig, setting);
        for (int frame = 0; frame < options.frames; ++frame) {
            run_frame(rig, frame == 2 ? 5 : 1);
            if (frame == 1) stage::new_frame(*rig.stage);  // no time has passed
            draw(rig, rig.carrier);
            if (frame % 2 == 1) draw(rig, rig.carrier, true, 0.5f);
            send_requests(rig);
            if (options.each_frame) options.each_frame();
        }
        press_all_buttons(rig, rig.carrier);
    }
    if (options.limits) try_limits(rig);
    stage::remove_geometry(*rig.stage, rig.carrier);
}

}  // namespace tovu::validate
