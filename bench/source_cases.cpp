#include <benchmark/benchmark.h>
#include <tovu/opengl.h>

#include <cmath>
#include <stdexcept>

#include "cases.h"
#include "particles/curves.h"
#include "particles/instance_caches.h"
#include "sources/container_source.h"
#include "sources/image_source.h"
#include "sources/wind_field.h"
#include "stage/scene/image.h"

namespace bench {
namespace {

constexpr int32_t kManyVertices = 2000;
constexpr int32_t kFrameWidth = 1920;
constexpr int32_t kFrameHeight = 1080;
constexpr int32_t kBirthsPerFrame = 500;
constexpr double kFramePeriod = 0.02;

stage::Mesh square(float half) {
    return {{{-half, -half, 0}, {half, -half, 0}, {half, half, 0}, {-half, half, 0}}};
}

// A closed curve with 12 lobes, similar to letters and logos.
stage::Mesh blossom(int32_t vertex_count, float radius) {
    stage::Mesh mesh;
    for (int32_t i = 0; i < vertex_count; ++i) {
        const double angle = 6.283185307179586 * i / vertex_count;
        const double r = static_cast<double>(radius) * (0.8 + 0.2 * std::sin(12 * angle));
        mesh.vertices.push_back({static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle)), 0});
    }
    return mesh;
}

// A star with many points. Each edge spans a third of the radius, so hundreds of edges span the height of any point.
stage::Mesh star(int32_t vertex_count, float radius) {
    stage::Mesh mesh = blossom(vertex_count, radius);
    for (size_t i = 0; i < mesh.vertices.size(); i += 2) mesh.vertices[i] = tovu::operator*(mesh.vertices[i], 0.66f);
    return mesh;
}

// A band along the diagonal of a square, with a thousandth of the area of its bounding box.
stage::Mesh thin_band(float half) {
    const float width = half * 0.001f;
    return {{{-half, -half, 0}, {-half + width, -half, 0}, {half, half, 0}, {half - width, half, 0}}};
}

void set_text(Scene& scene, const Smoke& smoke, const char* parameter, const std::string& value) {
    scene.host().set(smoke.handle, parameter, value);
}

/// A full smoke whose particles are tested in each frame against an outline. Those outside keep 99 % of their life, so
/// that the number of tests stays nearly constant.
Smoke make_tested_smoke(Scene& scene, const std::string& name, const stage::Mesh& mesh) {
    scene.host().add_outlines(name, {mesh});
    Smoke smoke = scene.make_smoke(kFull);
    scene.run(smoke, scene.long_run_frames() / 10);
    smoke.block->parameters.life_time_scale = 99.0f;
    smoke.block->parameters.spawn_type = tovu::kSpawnContainer;
    smoke.block->parameters.birth_rate = 0.0f;
    set_text(scene, smoke, "spawn_cont_name", name);
    return smoke;
}

// Restores the same records before each sample, so that shortened lives and deaths do not accumulate.
class Rewound {
  public:
    explicit Rewound(Smoke smoke) : smoke_(smoke) {
        for (const Particle* p = smoke.block->active_head; p != nullptr; p = p->next) records_.push_back(*p);
        for (Particle& p : records_) p.life = 1e6f;  // no particle dies in a frame, so the links do not change
        restore();
    }
    void restore() {
        size_t i = 0;
        for (Particle* p = smoke_.block->active_head; p != nullptr; p = p->next) *p = records_[i++];
    }
    Smoke& smoke() { return smoke_; }

  private:
    Smoke smoke_;
    std::vector<Particle> records_;
};

Case tested_step(Scene& scene, const char* name, const stage::Mesh& mesh) {
    return {
        case_name(name, kFull), kFull,
        [&scene, mesh, outline = std::string(name), rewound = std::shared_ptr<Rewound>()](Stopwatch& watch) mutable {
            if (!rewound) rewound = std::make_shared<Rewound>(make_tested_smoke(scene, outline, mesh));
            rewound->restore();
            scene.next_frame();
            watch.start();
            scene.step(rewound->smoke());
            watch.stop();
        }};
}

std::vector<uint8_t> noise(int32_t width, int32_t height) {
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 3);
    uint32_t state = 1;
    for (uint8_t& byte : pixels) byte = static_cast<uint8_t>((state = state * 1664525u + 1013904223u) >> 24);
    return pixels;
}

void add_picture(Scene& scene, const std::string& name, int32_t format, std::vector<uint8_t> pixels) {
    const auto added =
        stage::add_image(scene.host().stage(), name, kFrameWidth, kFrameHeight, format, std::move(pixels));
    if (!added) throw std::runtime_error(added.error().message);
}

Case wind_step(Scene& scene) {
    return {case_name("step/smoke_wind_image", kFull), kFull, [&scene, ready = false](Stopwatch& watch) mutable {
                Smoke& smoke = scene.long_run(kFull);
                set_features(smoke, {});
                if (!ready) {
                    add_picture(scene, "wind", GL_RGB, noise(kFrameWidth, kFrameHeight));
                    set_text(scene, smoke, "wind_image", "wind");
                    ready = true;
                }
                smoke.block->parameters.use_wind_image = 1;
                smoke.block->parameters.wind_image_range_x = smoke.block->parameters.wind_image_range_y = 400.0f;
                scene.next_frame();
                watch.start();
                scene.step(smoke);
                watch.stop();
                smoke.block->parameters.use_wind_image = 0;
            }};
}

// Births alone: all particles return to the pool before each frame.
Case birth_case(Scene& scene, const char* name, std::function<void(Smoke&)> prepare) {
    return {name, 1, [&scene, prepare = std::move(prepare), smoke = Smoke{}, ready = false](Stopwatch& watch) mutable {
                if (!ready) {
                    smoke = scene.make_smoke(kFull);
                    smoke.block->parameters.birth_rate = kBirthsPerFrame / static_cast<float>(kFramePeriod) + 0.5f;
                    prepare(smoke);
                    scene.run(smoke, 2);
                    ready = true;
                }
                scene.host().press(smoke.handle, "reset");
                scene.next_frame();
                watch.start();
                scene.step(smoke);
                watch.stop();
            }};
}

void add_birth_cases(std::vector<Case>& cases, Scene& scene) {
    cases.push_back(birth_case(scene, "births/one_lit_pixel", [&scene](Smoke& smoke) {
        std::vector<uint8_t> mask(static_cast<size_t>(kFrameWidth) * kFrameHeight, 0);
        mask[static_cast<size_t>(kFrameHeight / 2) * kFrameWidth + kFrameWidth / 3] = 255;
        add_picture(scene, "one pixel", GL_LUMINANCE, std::move(mask));
        smoke.block->parameters.spawn_type = tovu::kSpawnImage;
        set_text(scene, smoke, "spawn_image", "one pixel");
    }));
    cases.push_back(birth_case(scene, "births/thin_outline", [&scene](Smoke& smoke) {
        scene.host().add_outlines("thin band", {thin_band(100)});
        smoke.block->parameters.spawn_type = tovu::kSpawnContainer;
        set_text(scene, smoke, "spawn_cont_name", "thin band");
    }));
    cases.push_back(birth_case(scene, "births/cube", [](Smoke&) {}));
}

/// A source with an outline of `vertex_count` vertices that was read once, and points to test against it.
struct OutlineFixture {
    tovu::ContainerSpawnSource source;
    tovu::OutlineIndex index;
    std::vector<Vector3> points;

    OutlineFixture(Scene& scene, const std::string& name, int32_t vertex_count) {
        tovu::set_container(source, scene.host().add_outlines(name, {blossom(vertex_count, 100)}));
        tovu::refresh(source);
        uint32_t state = 1;
        const auto coordinate = [&state] {
            state = state * 1664525u + 1013904223u;
            return static_cast<float>(state >> 8) * (220.0f / 16777216.0f) - 110.0f;
        };
        for (int32_t i = 0; i < kFull; ++i) points.push_back({coordinate(), coordinate(), 0});
    }
    ~OutlineFixture() { tovu::release(source); }
    OutlineFixture(const OutlineFixture&) = delete;
    OutlineFixture& operator=(const OutlineFixture&) = delete;
};

using SharedOutline = std::shared_ptr<OutlineFixture>;

Case refresh_case(Scene& scene, int32_t vertex_count) {
    const std::string name = case_name("outline_refresh/smoke", vertex_count);
    return {name, static_cast<double>(vertex_count), [=, &scene, outline = SharedOutline()](Stopwatch& watch) mutable {
                if (!outline) outline = std::make_shared<OutlineFixture>(scene, name, vertex_count);
                watch.start();
                tovu::refresh(outline->source);
                outline->index.stale = true;
                tovu::update_index(outline->index, outline->source);
                watch.stop();
            }};
}

Case inside_case(Scene& scene, const char* variant, int32_t vertex_count, bool indexed) {
    const std::string name = case_name(variant, vertex_count);
    return {name, kFull, [=, &scene, outline = SharedOutline()](Stopwatch& watch) mutable {
                if (!outline) outline = std::make_shared<OutlineFixture>(scene, name, vertex_count);
                const tovu::InsideTest test =
                    tovu::open_inside_test(outline->source, indexed ? &outline->index : nullptr);
                int32_t inside = 0;
                watch.start();
                for (const Vector3& point : outline->points) inside += tovu::contains(test, point);
                watch.stop();
                benchmark::DoNotOptimize(inside);
            }};
}

Case sampling_case(Scene& scene) {
    return {case_name("image_sampling/smoke", kFull), kFull, [&scene, ready = false](Stopwatch& watch) mutable {
                static tovu::ImageSource source;
                static tovu::WindAngles angles;
                if (!ready) {
                    add_picture(scene, "sampled", GL_RGB, noise(kFrameWidth, kFrameHeight));
                    tovu::load(source, stage::find_image_by_name(scene.host().stage(), "sampled"));
                    tovu::set_rect(source, -200, -200, 200, 200);
                    tovu::fill_wind_angles(angles);
                    ready = true;
                }
                const tovu::WindImage wind{tovu::open_image(source), &angles, 10.0f, tovu::broadcast(1)};
                tovu::Float4 sum{};
                watch.start();
                for (int32_t i = 0; i < kFull; i += 2) {
                    const auto x = static_cast<float>(i * 37 % 400 - 200);
                    const auto y = static_cast<float>(i * 71 % 400 - 200);
                    const float xy[] = {x, y, y, x};
                    uint64_t pixels[2];
                    tovu::find_pixels(wind.reader, xy, 2, pixels);
                    sum += tovu::wind_field(wind, pixels[0]) + tovu::wind_field(wind, pixels[1]);
                }
                watch.stop();
                benchmark::DoNotOptimize(sum);
            }};
}

Case curve_case(Scene& scene, const char* name, void (*build)(tovu::SmokeInstance&)) {
    return {name, 1, [&scene, build](Stopwatch& watch) {
                Smoke& smoke = scene.long_run(kCounts[0]);
                watch.start();
                build(*smoke.block);
                watch.stop();
            }};
}

}  // namespace

void add_source_cases(std::vector<Case>& cases, Scene& scene) {
    cases.push_back(tested_step(scene, "step/smoke_in_square", square(300)));
    cases.push_back(tested_step(scene, "step/smoke_in_blossom", blossom(kManyVertices, 400)));
    cases.push_back(tested_step(scene, "step/smoke_in_star", star(kManyVertices, 400)));
    cases.push_back(wind_step(scene));
    add_birth_cases(cases, scene);
    for (const int32_t vertex_count : {100, 1000, 2000}) {
        cases.push_back(refresh_case(scene, vertex_count));
        cases.push_back(inside_case(scene, "inside_test/smoke", vertex_count, true));
        cases.push_back(inside_case(scene, "inside_test/plain", vertex_count, false));
    }
    cases.push_back(sampling_case(scene));
    cases.push_back(curve_case(scene, "curve/color_table", tovu::build_color_table));
    cases.push_back(curve_case(scene, "curve/alpha_table", tovu::build_alpha_table));
    cases.push_back(curve_case(scene, "curve/alpha_text", tovu::build_alpha_text));
}

}  // namespace bench
