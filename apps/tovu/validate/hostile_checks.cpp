// Checks of group hostile: wrong answers of the host, and arbitrary bits in slots.
#include <sys/resource.h>

#include <bit>
#include <cmath>
#include <limits>

#include "checks.h"
#include "child.h"
#include "heap_watch.h"
#include "rig.h"
#include "trace.h"
#include "watch.h"

namespace tovu::validate {
namespace {

using stage::Overrides;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinite = std::numeric_limits<float>::infinity();
constexpr int32_t kNoSuchHandle = 12345;
constexpr int32_t kMany = 2000;
constexpr uintptr_t kUnreadable = 64;

template <class... Arguments>
void leave_alone(Arguments...) {}

struct Lie {
    const char* words;
    void (*arrange)(Overrides& overrides);
    const char* service = nullptr;  // with the wrong answer; null if there are several
};

#define UNCHANGED(service, field)                                                          \
    {                                                                                      \
        "while " #service " leaves its out values",                                        \
            [](Overrides& o) { o.field = [](auto... a) { leave_alone(a...); }; }, #service \
    }

/// Services that leave their out values unchanged, as for an unknown object.
const Lie kUnchanged[] = {
    UNCHANGED(_api__container_get_absolute_position, container_get_absolute_position),
    UNCHANGED(_api__container_get_absolute_rotation, container_get_absolute_rotation),
    UNCHANGED(_api__container_get_absolute_scaling, container_get_absolute_scaling),
    UNCHANGED(_api__container_get_transformation_matrix, container_get_transformation_matrix),
    UNCHANGED(_api__container_get_inverse_matrix, container_get_inverse_matrix),
    UNCHANGED(_api__container_get_geometry, container_get_geometry),
    UNCHANGED(_api__get_geom_detail, get_geom_detail),
    UNCHANGED(_api__get_geom_geomod, get_geom_geomod),
    UNCHANGED(_api__geomod_get_info, geomod_get_info),
    UNCHANGED(_api__geomod_goto_mesh, geomod_goto_mesh),
    UNCHANGED(_api__geomod_get_num_mesh_verices, geomod_get_num_mesh_verices),
    UNCHANGED(_api__geomod_goto_vertex, geomod_goto_vertex),
    UNCHANGED(_api__geomod_get_vertex, geomod_get_vertex),
    UNCHANGED(_api__get_image_size, get_image_size),
    UNCHANGED(_api__get_image_format, get_image_format),
    UNCHANGED(_api__get_image_data, get_image_data),
    UNCHANGED(_api__get_camera_pan, get_camera_pan),
    UNCHANGED(_api__get_camera_tilt, get_camera_tilt),
    UNCHANGED(_api__get_camera_view_matrix, get_camera_view_matrix),
    UNCHANGED(_api__get_camera_position, get_camera_position),
    UNCHANGED(_api__get_camera_direction, get_camera_direction),
    UNCHANGED(_api__get_position, get_position),
    UNCHANGED(_api__pellor_get_is_on_air, is_on_air),
    UNCHANGED(_api__pellor_get_is_post_recording, is_post_recording),
    UNCHANGED(_api__pellor_get_post_current_time, post_current_time),
    UNCHANGED(_api__pellor_get_retrace_counter, retrace_counter),
    UNCHANGED(_api__pellor_get_refreshrate, refreshrate),
};

auto vector_of(float value) {
    return [value](int32_t, float* x, float* y, float* z) { *x = *y = *z = value; };
}
auto counts_of(int32_t vertices, int32_t meshes) {
    return [=](int32_t, int32_t* v, int32_t* m, uint8_t*, uint8_t*, uint8_t*) {
        *v = vertices;
        *m = meshes;
    };
}
auto size_of(int32_t width, int32_t height) {
    return [=](int32_t, int32_t* w, int32_t* h) {
        *w = width;
        *h = height;
    };
}
void put_no_pixels(int32_t, uint8_t** pixels) {
    *pixels = nullptr;
}
void put_odd_matrix(int32_t, float* matrix) {
    for (int i = 0; i < 16; ++i) matrix[i] = i % 2 ? kNan : -kInfinite;
}
int32_t one_in_two(int32_t) {
    static int asked = 0;
    return ++asked % 2;
}

const Lie kWrong[] = {
    {"while no object is valid", [](Overrides& o) { o.object_valid = [](int32_t) { return 0; }; }},
    {"while objects come and go", [](Overrides& o) { o.object_valid = one_in_two; }},
    {"while it has no objects of its own",
     [](Overrides& o) { o.get_objectid_local = [](const char*, int32_t) { return -1; }; }},
    {"while no container is found",
     [](Overrides& o) {
         o.get_objectid = [](const char*, const char*, int32_t) { return -1; };
         o.get_objectid_from_objectid = [](int32_t) { return -1; };
     }},
    {"while containers are found under wrong handles",
     [](Overrides& o) { o.get_objectid = [](const char*, const char*, int32_t) { return kNoSuchHandle; }; }},
    {"while containers carry nothing",
     [](Overrides& o) { o.container_get_geometry = [](int32_t, int32_t* g) { *g = -1; }; }},
    {"while geometries have wrong handles",
     [](Overrides& o) { o.container_get_geometry = [](int32_t, int32_t* g) { *g = kNoSuchHandle; }; }},
    {"while there is no mesh access",
     [](Overrides& o) { o.get_geom_geomod = [](int32_t, int32_t, int32_t, int32_t* a) { *a = 0; }; }},
    {"while there are no meshes", [](Overrides& o) { o.geomod_get_info = counts_of(0, 0); }},
    {"while counts of meshes are negative", [](Overrides& o) { o.geomod_get_info = counts_of(-1, -1); }},
    {"while there are more meshes than vertices", [](Overrides& o) { o.geomod_get_info = counts_of(3, kMany); }},
    {"while meshes have fewer vertices than they say in all",
     [](Overrides& o) { o.geomod_get_info = counts_of(kMany, 2); }},
    {"while meshes have more vertices in all than fit into memory",
     [](Overrides& o) { o.geomod_get_info = counts_of(INT32_MAX, 2); }},
    {"while a mesh has a negative count of vertices",
     [](Overrides& o) { o.geomod_get_num_mesh_verices = [](int32_t, int32_t, int32_t* count) { *count = -7; }; }},
    {"while a mesh has more vertices than all meshes together",
     [](Overrides& o) { o.geomod_get_num_mesh_verices = [](int32_t, int32_t, int32_t* count) { *count = kMany; }; }},
    {"while vertices are not numbers",
     [](Overrides& o) {
         o.geomod_get_vertex = [](int32_t, int32_t, float* x, float* y, float* z) { *x = *y = *z = kNan; };
     }},
    {"while no image is found", [](Overrides& o) { o.get_image_objectid = [](const char*) { return -1; }; }},
    {"while images have wrong handles",
     [](Overrides& o) { o.get_image_objectid = [](const char*) { return kNoSuchHandle; }; }},
    {"while images hold no pixels", [](Overrides& o) { o.get_image_data = put_no_pixels; }},
    {"while images have no size",
     [](Overrides& o) {
         o.get_image_size = size_of(0, 0);
         o.get_image_data = [](int32_t, uint8_t** pixels) { *pixels = reinterpret_cast<uint8_t*>(kUnreadable); };
     }},
    {"while images have a negative size",
     [](Overrides& o) {
         o.get_image_size = size_of(-4, -3);
         o.get_image_data = put_no_pixels;
     }},
    {"while images are enormous and hold no pixels",
     [](Overrides& o) {
         o.get_image_size = size_of(INT32_MAX, INT32_MAX);
         o.get_image_data = put_no_pixels;
     }},
    {"while images have an unknown format",
     [](Overrides& o) {
         o.get_image_format = [](int32_t, int32_t* format) { *format = 77; };
         o.get_image_data = put_no_pixels;
     }},
    {"while there is no camera",
     [](Overrides& o) { o.get_cameraid = [](int32_t, const char*, int32_t) { return -1; }; }},
    {"while the camera has no numbers",
     [](Overrides& o) {
         o.get_camera_pan = o.get_camera_tilt = [](int32_t, float* degrees) { *degrees = kNan; };
         o.get_camera_view_matrix = put_odd_matrix;
         o.get_position = vector_of(kNan);
     }},
    {"while containers have no size", [](Overrides& o) { o.container_get_absolute_scaling = vector_of(0); }},
    {"while containers have no numbers",
     [](Overrides& o) {
         o.container_get_absolute_position = o.container_get_absolute_rotation = o.container_get_absolute_scaling =
             vector_of(kNan);
         o.container_get_transformation_matrix = o.container_get_inverse_matrix = put_odd_matrix;
     }},
    {"while a frame takes no time", [](Overrides& o) { o.refreshrate = [](double* s) { *s = 0; }; }},
    {"while a frame goes back in time", [](Overrides& o) { o.refreshrate = [](double* s) { *s = -1; }; }},
    {"while a frame takes forever", [](Overrides& o) { o.refreshrate = [](double* s) { *s = HUGE_VAL; }; }},
    {"while the time of a frame is no number",
     [](Overrides& o) { o.refreshrate = [](double* s) { *s = std::nan(""); }; }},
    {"while a recording has no time",
     [](Overrides& o) {
         o.is_post_recording = [](uint8_t* recording) { *recording = 1; };
         o.post_current_time = [](float* seconds) { *seconds = kNan; };
     }},
    {"while the retrace counter is negative",
     [](Overrides& o) {
         o.retrace_counter = [](int32_t* counter) {
             static int32_t count = INT32_MIN;
             *counter = ++count;
         };
     }},
    {"while requests are taken and not answered",
     [](Overrides& o) { o.geom_dispatcher = [](int32_t, int32_t, void*, void*) { return 1; }; }},
};

/// Runs an instance from its creation to its removal. first_frame: the lie starts before the creation (0) or in
/// frame 2. The last frame has correct answers.
void run_with_lie(Rig& rig, const Lie& lie, int first_frame, bool with_smoke) {
    const Overrides right = rig.stage->overrides;
    const auto values = with_smoke ? values_with_container(rig, 0, "smoke") : values_to_try(rig, 0);
    const auto lie_now = [&] {
        watch().during = lie.words;
        lie.arrange(rig.stage->overrides);
    };
    if (first_frame == 0) lie_now();
    add_instance(rig, rig.carrier, values);
    for (int frame = 0; frame < 7; ++frame) {
        if (frame == 2 && first_frame == 2) lie_now();
        if (frame == 4) set_values(rig, rig.carrier, values_to_try(rig, frame), true);
        run_frame(rig);
        draw(rig, rig.carrier);
        send_requests(rig);
        press_all_buttons(rig, rig.carrier);
    }
    rig.stage->overrides = right;
    watch().during.clear();
    run_frame(rig);
    draw(rig, rig.carrier);
    stage::remove_geometry(*rig.stage, rig.carrier);
}

/// Values of switches and choices, which decide which services the plug-in calls.
std::vector<stage::ParameterValues> choices_to_try(const Rig& rig) {
    std::vector<stage::ParameterValues> all = limits_to_try(rig, 40, false);
    all.emplace_back();  // the defaults
    return all;
}

/// Runs an instance for each choice, with another lie in each frame.
void run_choices_with_lies(Rig& rig, const std::vector<Lie>& lies) {
    const Overrides right = rig.stage->overrides;
    for (const stage::ParameterValues& choice : choices_to_try(rig)) {
        add_instance(rig, rig.carrier, values_to_try(rig, 0));
        set_values(rig, rig.carrier, choice, true);
        run_frame(rig);
        for (const Lie& lie : lies) {
            watch().during = lie.words;
            lie.arrange(rig.stage->overrides);
            run_frame(rig);
            draw(rig, rig.carrier);
            rig.stage->overrides = right;
            watch().during.clear();
        }
        run_frame(rig);
        draw(rig, rig.carrier);
        stage::remove_geometry(*rig.stage, rig.carrier);
    }
}

struct Unset {
    uint32_t stack;  // content of unset locals
    uint8_t memory;  // content of new instance blocks and heap blocks
};

std::vector<TraceLine> trace_of_lies(const Subject& subject, const std::vector<Lie>& lies, const Unset& unset) {
    std::unique_ptr<Rig> rig;
    const auto scenario = [&] {
        stage::MemoryOptions memory = wide_memory();
        memory.fill = unset.memory;
        rig = make_rig(subject, memory);
        fill_new_blocks(unset.memory);
        poison_stack(unset.stack);
        for (const Lie& lie : lies) {
            rig->random.seed(subject.seed);
            run_with_lie(*rig, lie, 0, false);
        }
        run_choices_with_lies(*rig, lies);
        rig.reset();
    };
    return trace_of(scenario, [&] { return rig ? rig->carrier : -1; });
}

/// Finds out values that the plug-in reads without setting them: the run must not depend on the content of memory.
void check_unset_out_values(const Subject& subject) {
    constexpr const char* kRight = "set every out value before the call";
    std::vector<Lie> lies;
    for (const Lie& lie : kUnchanged)
        if (imports(subject.file, lie.service)) lies.push_back(lie);
    // A plausible float and double, a very large integer, and a byte that is not 0.
    Unset other{0x40014001, 0x01};
    const auto without_lies = [&subject] { return trace_of_lies(subject, {}, {0, 0}); };
    // Without lies, a dependence on the content of new memory is a finding of life.garbage and is not compared here.
    if (!expect_equal("life.garbage", without_lies(), trace_of_lies(subject, {}, {0, other.memory}), without_lies, "",
                      kRight))
        other.memory = 0;
    const auto with_zeros = [&] { return trace_of_lies(subject, lies, {0, 0}); };
    expect_equal("host.lies", with_zeros(), trace_of_lies(subject, lies, other), with_zeros,
                 "an out value that the host left alone was used unset", kRight);
}

const std::vector<std::string> kDamage = {"block.bounds", "text.bounds", "heap.bounds"};

constexpr uint32_t kEdgePatterns[] = {0,           1,           2,           3,           0xFFFFFFFFu, 0x80000000u,
                                      0x7FFFFFFFu, 0x7F800000u, 0xFF800000u, 0x7FC00000u, 0x7F7FFFFFu, 0xFF7FFFFFu,
                                      0x00000001u, 0x80000001u, 0x3F800000u, 0x42C80000u, 0x4F000000u};

/// Sets one float at a time to a value that is not finite. Drawn values must stay finite. Finite inputs may overflow
/// and are not tried here.
void try_non_finite(Rig& rig) {
    for (const stage::ParameterInfo& parameter : plugin_of(rig).parameters) {
        if (parameter.kind != stage::ParameterKind::kFloat) continue;
        for (const float number : {kNan, kInfinite, -kInfinite}) {
            stage::set_slot_bits(*rig.stage, rig.carrier, parameter.index, std::bit_cast<uint32_t>(number));
            for (int frame = 0; frame < 2; ++frame) {
                run_frame(rig);
                draw(rig, rig.carrier);
            }
        }
        set_values(rig, rig.carrier, {{parameter.name, parameter.initial}}, true);
    }
}

void put_any_bits(Rig& rig) {
    for (const stage::ParameterInfo& parameter : plugin_of(rig).parameters) {
        if (parameter.kind >= stage::ParameterKind::kString || rig.random() % 3 == 0) continue;
        auto bits = static_cast<uint32_t>(rig.random());
        if (rig.random() % 2) bits = kEdgePatterns[rig.random() % std::size(kEdgePatterns)];
        stage::set_slot_bits(*rig.stage, rig.carrier, parameter.index, bits);
        if (rig.random() % 4 == 0) stage::notify_changed(*rig.stage, rig.carrier, parameter.index);
    }
}

}  // namespace

void check_host_lies(const Subject& subject) {
    // A plug-in that allocates for a wrong count must not use up the memory of the machine. Sanitizers need more than
    // this limit.
    constexpr rlimit kMostMemory{rlim_t{3} << 30, rlim_t{3} << 30};
    if (heap_can_be_watched()) setrlimit(RLIMIT_AS, &kMostMemory);
    watch().stands_for = kDamage;
    watch().host_is_wrong = true;
    {
        const auto rig = make_rig(subject);
        for (const Lie& lie : kWrong) {
            for (const int first_frame : {0, 2}) run_with_lie(*rig, lie, first_frame, false);
            run_with_lie(*rig, lie, 2, true);
        }
        run_choices_with_lies(*rig, {std::begin(kWrong), std::end(kWrong)});
    }
    check_unset_out_values(subject);
}

void check_fuzz_slots(const Subject& subject) {
    const auto rig = make_rig(subject);
    bool has_numbers = false;
    for (const stage::ParameterInfo& parameter : plugin_of(*rig).parameters)
        has_numbers = has_numbers || parameter.kind < stage::ParameterKind::kString;
    if (!has_numbers) return skip("it has no parameters with numbers");
    add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
    watch().stands_for = {"block.bounds", "text.bounds", "heap.bounds", "gl.values", "box.finite"};
    try_non_finite(*rig);
    watch().stands_for = kDamage;
    for (int frame = 0; frame < 200; ++frame) {
        if (frame % 2 == 0) put_any_bits(*rig);
        run_frame(*rig);
        draw(*rig, rig->carrier);
        float point[3] = {1, 2, 3};
        int32_t reply[2] = {};
        for (const int32_t request : {0x5350574E, 0x4E455750, 0x4953494E})
            stage::dispatch(*rig->stage, rig->carrier, request, point, reply);
    }
    stage::remove_geometry(*rig->stage, rig->carrier);
}

}  // namespace tovu::validate
