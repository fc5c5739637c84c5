#include "play_run.h"

#include <algorithm>
#include <chrono>

#include "curve_samples.h"
#include "stage/lint/lint.h"
#include "stage/plugins/instance.h"

namespace tovu {

namespace {

using Clock = std::chrono::steady_clock;
using stage::Done;
using stage::Result;

constexpr const char* kAidRole = "aid";

double ms_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::vector<stage::ParameterValue> values_of(const stage::BuiltScene& built, size_t container,
                                             const stage::Plugin& plugin) {
    std::vector<stage::ParameterValue> values;
    for (const stage::ParameterInfo& parameter : plugin.parameters) {
        Result<stage::ParameterValue> value =
            stage::get_parameter(*built.stage, built.container_handles[container], parameter.name);
        values.push_back(value ? std::move(*value) : parameter.initial);
    }
    return values;
}

SceneFacts facts_of(const stage::BuiltScene& built) {
    SceneFacts facts;
    std::map<stage::PluginId, std::shared_ptr<const NotedPlugin>> noted;
    for (const auto& [id, notes] : built.notes)
        noted[id] = std::make_shared<const NotedPlugin>(NotedPlugin{stage::plugin(id), notes});
    for (size_t i = 0; i < built.description.containers.size(); ++i) {
        ContainerFacts container{built.description.containers[i].name, nullptr, {}, {}};
        if (const stage::PluginId id = built.plugins[i]; id >= 0) {
            container.noted = noted[id];
            container.values = values_of(built, i, container.noted->plugin);
            container.curves = curve_samples(*built.stage, built.container_handles[i], container.noted->notes);
        }
        facts.containers.push_back(std::move(container));
    }
    facts.warnings = built.warnings;
    const std::vector<std::string> lines = stage::lint_scene(built);
    facts.warnings.insert(facts.warnings.end(), lines.begin(), lines.end());
    return facts;
}

void add_span(FrameNumbers& numbers, const stage::TraceSpan& span) {
    const double ms = span.duration_seconds * 1000.0;
    if (span.event == "PLUGIN_NEW_GEOM") {
        numbers.step_ms += ms;
    } else if (span.event == "PLUGIN_RENDER_OPENGL") {
        numbers.plugin_draw_ms += ms;
    } else {
        for (SectionTime& section : numbers.sections) {
            if (section.name == span.event) {
                section.ms += ms;
                return;
            }
        }
        numbers.sections.push_back({std::string(span.event), ms});
    }
}

const stage::Instance* instance_in(const PlayRun& play, size_t container) {
    const stage::BuiltScene& built = play.run.built;
    return stage::instance_of(static_cast<const stage::Stage&>(*built.stage), built.container_handles[container]);
}

void note_births(PlayRun& play) {
    const auto second = static_cast<size_t>(std::max(1.0, play.run.built.description.frame_rate + 0.5));
    for (size_t i = 0; i < play.places.size(); ++i) {
        const stage::Instance* instance = instance_in(play, i);
        if (!play.places[i] || instance == nullptr) continue;
        BirthRecord& record = play.births[i];
        record.births.push_back(count_births(*instance, *play.places[i], 1.0 / play.run.built.description.frame_rate));
        record.sum += record.births.back();
        if (record.births.size() <= second) continue;
        record.sum -= record.births.front();
        record.births.pop_front();
    }
}

double number_of(const PlayRun& play, size_t container, const std::string& parameter) {
    const stage::BuiltScene& built = play.run.built;
    const Result<stage::ParameterValue> value =
        stage::get_parameter(*built.stage, built.container_handles[container], parameter);
    if (!value) return 0.0;
    if (const auto* whole = std::get_if<int>(&*value)) return *whole;
    const auto* number = std::get_if<double>(&*value);
    return number != nullptr ? *number : 0.0;
}

std::vector<ParticleCounts> particles_of(const PlayRun& play) {
    std::vector<ParticleCounts> all;
    const stage::BuiltScene& built = play.run.built;
    for (size_t i = 0; i < play.places.size(); ++i) {
        const stage::Instance* instance = instance_in(play, i);
        if (!play.places[i] || instance == nullptr) continue;
        ParticleCounts counts{built.description.containers[i].name, 0, 0, 0, 0, {}};
        count_particles(*instance, *play.places[i], counts);
        const BirthRecord& record = play.births[i];
        if (!record.births.empty())
            counts.births_per_second =
                record.sum * built.description.frame_rate / static_cast<double>(record.births.size());
        if (const auto& births = built.notes.at(built.plugins[i]).births) {
            counts.limit = static_cast<int32_t>(number_of(play, i, births->number));
            const double wanted = number_of(play, i, births->rate);
            if (counts.alive >= counts.limit) counts.lost_per_second = std::max(0.0, wanted - counts.births_per_second);
        }
        all.push_back(std::move(counts));
    }
    return all;
}

// Projects a point into the picture. False for a point beside or behind the camera.
bool to_picture(const stage::Matrix& matrix, const std::array<float, 3>& point, std::array<float, 2>& out) {
    std::array<float, 4> clip{};
    for (size_t row = 0; row < 4; ++row)
        clip[row] = matrix[row] * point[0] + matrix[4 + row] * point[1] + matrix[8 + row] * point[2] + matrix[12 + row];
    if (!(clip[3] > 0.0f)) return false;
    out = {0.5f + 0.5f * clip[0] / clip[3], 0.5f - 0.5f * clip[1] / clip[3]};
    return true;
}

std::vector<ShownBox> boxes_of(const stage::BuiltScene& built) {
    std::vector<ShownBox> boxes;
    const stage::Camera& camera = built.stage->camera;
    const auto& size = built.description.size;
    const float aspect = static_cast<float>(size[0]) / static_cast<float>(size[1]);
    const stage::Matrix view = stage::multiply(stage::projection_matrix(camera, aspect), stage::view_matrix(camera));
    for (const int32_t handle : built.container_handles) {
        const stage::Container* container = stage::find_container(*built.stage, handle);
        if (container == nullptr || !container->bounding_box || !stage::is_shown(*built.stage, handle)) continue;
        const auto& [low, high] = *container->bounding_box;
        const stage::Matrix matrix = stage::multiply(view, stage::world_matrix(*built.stage, handle));
        ShownBox box{container->name, {}};
        bool seen = true;
        for (size_t corner = 0; corner < 8; ++corner)
            seen = seen && to_picture(matrix,
                                      {(corner & 1) != 0 ? high.x : low.x, (corner & 2) != 0 ? high.y : low.y,
                                       (corner & 4) != 0 ? high.z : low.z},
                                      box.corners[corner]);
        if (seen) boxes.push_back(std::move(box));
    }
    return boxes;
}

// Turns on the parameters that show design aids, and restores them in the destructor. Does not notify the plug-in.
class ShownAids {
  public:
    ShownAids(PlayRun& play, bool shown) : built_(play.run.built) {
        if (!shown) return;
        for (size_t i = 0; i < built_.plugins.size(); ++i) {
            if (built_.plugins[i] < 0) continue;
            for (const stage::ParameterNotes& notes : built_.notes.at(built_.plugins[i]).parameters)
                if (notes.role == kAidRole) turn_on(built_.container_handles[i], notes.name);
        }
    }
    ShownAids(const ShownAids&) = delete;
    ShownAids& operator=(const ShownAids&) = delete;
    ~ShownAids() {
        for (const Saved& saved : saved_) set(saved.handle, saved.parameter, saved.value);
    }

  private:
    struct Saved {
        int32_t handle;
        std::string parameter;
        stage::ParameterValue value;
    };
    void set(int32_t handle, const std::string& parameter, const stage::ParameterValue& value) {
        stage::set_parameter(*built_.stage, handle, parameter, value, {.notify = false});
    }
    void turn_on(int32_t handle, const std::string& parameter) {
        const Result<stage::ParameterValue> value = stage::get_parameter(*built_.stage, handle, parameter);
        if (!value) return;
        saved_.push_back({handle, parameter, *value});
        set(handle, parameter, true);
    }

    stage::BuiltScene& built_;
    std::vector<Saved> saved_;
};

bool same(const stage::Camera& a, const stage::Camera& b) {
    return a.position.x == b.position.x && a.position.y == b.position.y && a.position.z == b.position.z &&
           a.pan_degrees == b.pan_degrees && a.tilt_degrees == b.tilt_degrees && a.roll_degrees == b.roll_degrees &&
           a.field_of_view_degrees == b.field_of_view_degrees;
}

}  // namespace

bool operator==(const ViewOrders& a, const ViewOrders& b) {
    if (a.camera.has_value() != b.camera.has_value()) return false;
    if (a.camera && !same(*a.camera, *b.camera)) return false;
    return a.forces == b.forces && a.on_air == b.on_air && a.boxes == b.boxes;
}

Result<PlayRun> make_play_run(const stage::SceneDescription& scene, const std::string& smoke_plugin,
                              int64_t scene_number) {
    const Clock::time_point start = Clock::now();
    Result<stage::BuiltScene> built = stage::build_scene(scene, smoke_plugin);
    if (!built) return built.error();
    PlayRun play{stage::start_run(std::move(*built)), nullptr, {}, {}, std::make_shared<FrameNumbers>()};
    const stage::BuiltScene& scene_built = play.run.built;
    SceneFacts facts = facts_of(scene_built);
    for (const stage::PluginId id : scene_built.plugins) {
        const auto table =
            id < 0 ? Result<stage::FieldTable>(stage::FieldTable{}) : stage::read_field_table(stage::plugin(id));
        if (!table) return table.error();
        play.places.push_back(find_particle_places(*table));
    }
    play.births.resize(play.places.size());
    scene_built.stage->profile.sink = [numbers = play.numbers](const stage::TraceSpan& span) {
        add_span(*numbers, span);
    };
    facts.scene_number = scene_number;
    facts.build_ms = ms_since(start);
    play.facts = std::make_shared<const SceneFacts>(std::move(facts));
    return play;
}

int64_t current_frame(const PlayRun& play) {
    return play.run.next_frame - 1;
}

Result<Done> run_next_frame(PlayRun& play) {
    play.numbers->step_ms = 0;
    Result<Done> done = stage::run_until(play.run, play.run.next_frame);
    if (done) note_births(play);
    return done;
}

Result<Done> press_in_run(PlayRun& play, const std::string& container, const std::string& button) {
    const stage::BuiltScene& built = play.run.built;
    SceneFacts facts = *play.facts;
    for (size_t i = 0; i < facts.containers.size(); ++i) {
        ContainerFacts& pressed = facts.containers[i];
        if (pressed.name != container || !pressed.noted) continue;
        const std::vector<stage::ParameterValue> before = values_of(built, i, pressed.noted->plugin);
        if (Result<Done> done = stage::press_button(*built.stage, built.container_handles[i], button); !done)
            return done;
        const std::vector<stage::ParameterValue> after = values_of(built, i, pressed.noted->plugin);
        for (size_t k = 0; k < after.size(); ++k)
            if (after[k] != before[k]) pressed.values[k] = after[k];
    }
    play.facts = std::make_shared<const SceneFacts>(std::move(facts));
    return Done{};
}

Result<DrawnFrame> draw_run(PlayRun& play, stage::SceneCanvas& canvas, const ViewOrders& view) {
    stage::Stage& stage = *play.run.built.stage;
    const stage::Camera scene_camera = stage.camera;
    if (view.camera) stage.camera = *view.camera;
    stage.clock.on_air = view.on_air;
    FrameNumbers& numbers = *play.numbers;
    numbers.plugin_draw_ms = 0;
    numbers.sections.clear();
    Clock::time_point start = Clock::now();
    Result<stage::Picture> picture = [&] {
        const ShownAids aids(play, view.forces);
        return stage::draw_scene(canvas, play.run.built);
    }();
    numbers.picture_ms = ms_since(start) - numbers.plugin_draw_ms;
    numbers.frame = current_frame(play);
    start = Clock::now();
    Result<DrawnFrame> drawn = picture.error();
    if (picture) {
        drawn = DrawnFrame{std::move(*picture), {}, particles_of(play), {}};
        if (view.boxes) drawn->boxes = boxes_of(play.run.built);
        numbers.other_ms = ms_since(start);
        drawn->numbers = numbers;
    }
    stage.camera = scene_camera;
    return drawn;
}

}  // namespace tovu
