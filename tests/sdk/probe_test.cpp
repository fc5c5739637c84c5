// The sample that checks hosts. It finds no fault in the Stage. With one fault at a time, only the check of that fault
// fails.
#include <epoxy/gl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <cstdlib>
#include <cstring>
#include <set>
#include <sstream>
#include <string_view>
#include <thread>

#include "expect.h"
#include "stage/opengl/context.h"
#include "stage/opengl/framebuffer.h"
#include "stage/opengl/pass.h"
#include "test_host.h"

namespace {
bool only_15_random_bits = false;
}

// Plug-ins use this function as `rand`.
extern "C" [[gnu::visibility("default")]] int rand() noexcept {
    const long drawn = random();
    return static_cast<int>(only_15_random_bits ? drawn & 0x7fff : drawn);
}

namespace tovu {
namespace {

using stage::find_container;

// A scene with two instances of the probe, a container with meshes, and an image.
struct Host : TestHost {
    Host() {
        stage().camera = {{300, 120, 330}, 40, -15, 5};
        outer = stage::add_container(stage(), "outer");
        container(outer).placement = {{100, -20, 7}, {10, 20, 30}, {2, 2, 2}};
        add_outlines("shape", {{{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}}}, {{{20, 0, 0}, {30, 0, 0}, {20, 10, 0}}}});
        shape = stage::find_container_by_name(stage(), "shape");
        EXPECT_TRUE(stage::add_image(stage(), "picture", 4, 4, 0x1908, std::vector<uint8_t>(64)));
    }
    void add_probes() {
        one = stage::add_container(stage(), "one", outer);
        two = stage::add_container(stage(), "two");
        container(one).placement = {{20, -5, 3}, {30, -40, 50}, {1, 2, 0.5f}};
        add_instance(one, TOVU_PROBE_PLUGIN, {{"shape", "shape"}, {"picture", "picture"}, {"questions", "all"}});
        add_instance(two, TOVU_PROBE_PLUGIN, {{"word", word}});
    }

    stage::Overrides& services() { return stage().overrides; }
    const stage::EntryPoints& calls() { return stage::plugin(stage::instance_of(stage(), one)->plugin).entry_points; }
    void* block(int32_t handle) { return stage::instance_of(stage(), handle)->block; }
    int32_t geometry(int32_t handle) { return container(handle).geometry_handle; }
    bool is_probe(int32_t object) { return object != -1 && (object == geometry(one) || object == geometry(two)); }
    void set_slot(int32_t index, uint32_t bits) { ASSERT_TRUE(stage::set_slot_bits(stage(), one, index, bits)); }

    // Makes direct calls of entry points count as calls of this container's instance.
    void call_as(int32_t handle) {
        services().get_objectid_local = [this, handle](const char* name, int32_t type) {
            if (!stage().running.empty()) return _api__get_objectid_local(name, type);
            return *name == '\0' ? handle : geometry(handle);
        };
    }
    void begin_frame() {
        stage::advance_frame(stage());
        stage().clock.frame_has_run = true;
    }
    void new_geom(int32_t handle) {
        call_as(handle);
        calls().new_geom(block(handle), 0);
    }

    // Runs a frame and its passes, with OpenGL if there is a context.
    void run_frame(float opacity = 1) {
        run_frames(1);
        for (const int32_t handle : {one, two}) {
            const auto draw = [&] {
                if (in_pass) in_pass(*this);
                stage::call_render(stage(), handle, 0, opacity);
            };
            if (!in_opengl) {
                draw();
                continue;
            }
            stage::PassSettings settings;
            settings.world = stage::world_matrix(stage(), handle);
            settings.projection_view =
                stage::multiply(stage::projection_matrix(stage().camera, 1.5f), stage::view_matrix(stage().camera));
            stage::draw_pass(settings, draw);
        }
    }

    int32_t outer = -1, shape = -1, one = -1, two = -1;
    const char* word = "smoke";
    bool in_opengl = false;
    void (*in_pass)(Host& host) = nullptr;
};

// A page below 4 GiB with `bytes`, filled up with `filler`.
uint32_t low_page(std::string_view bytes, char filler, int rights) {
    auto* const page = static_cast<char*>(mmap(reinterpret_cast<void*>(0x20000000), 4096, PROT_READ | PROT_WRITE,
                                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0));
    std::memset(page, filler, 4096);
    bytes.copy(page, bytes.size());
    mprotect(page, 4096, rights);
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(page));
}

struct alignas(8) SpareBlock {
    uint8_t bytes[4104] = {};
};

using Deed = void (*)(Host& host);
enum When { kFirst, kBetween, kLast, kInPass };  // before there are instances; between frames; after their clean-up

struct Wrong {
    const char* name;
    const char* check;  // the check that fails
    When when;
    Deed deed;
};

const Wrong kWrongs[] = {
    {"registers twice", "init.once", kBetween, [](Host& h) { h.calls().init(); }},
    {"keeps pointers to texts", "init.texts", kFirst, [](Host& h) { h.word = "#####"; }},
    {"calls from another thread", "call.thread", kBetween,
     [](Host& h) { std::thread(h.calls().dispatcher_callback, h.block(h.one), 0, nullptr, nullptr).join(); }},
    {"makes an instance twice", "call.order", kBetween,
     [](Host& h) {
         h.call_as(h.one);
         h.calls().init_function(h.block(h.one));
     }},
    {"calls a block that it has not made", "call.order", kBetween,
     [](Host& h) {
         SpareBlock spare;
         h.calls().changed_callback(spare.bytes, 0);
     }},
    {"calls after clean-up", "call.order", kBetween,
     [](Host& h) {
         void* const block = h.block(h.two);
         h.call_as(h.two);
         h.calls().cleanup_function(block);
         h.calls().new_geom(block, 0);
         h.calls().init_function(block);
     }},
    {"never cleans up", "call.order", kLast, [](Host&) { std::exit(0); }},
    {"calls inside a service", "call.nested", kFirst,
     [](Host& h) {
         h.services().set_geom_changed = [&h](int32_t geometry) {
             if (geometry == h.geometry(h.one)) h.calls().dispatcher_callback(h.block(h.one), 0, nullptr, nullptr);
         };
     }},
    {"aligns to 4 bytes", "block.address", kBetween,
     [](Host& h) {
         SpareBlock spare;
         std::memcpy(spare.bytes + 4, h.block(h.two), 4096);
         h.call_as(h.shape);
         h.calls().init_function(spare.bytes + 4);
         h.calls().cleanup_function(spare.bytes + 4);
     }},
    {"moves a block", "block.address", kBetween,
     [](Host& h) {
         SpareBlock spare;
         std::memcpy(spare.bytes, h.block(h.two), 4096);
         h.calls().dispatcher_callback(spare.bytes, 0, nullptr, nullptr);
     }},
    {"writes behind the slots", "block.kept", kBetween, [](Host& h) { ++static_cast<char*>(h.block(h.one))[36]; }},
    {"allocates too little", "block.kept", kBetween, [](Host& h) { ++static_cast<char*>(h.block(h.one))[4095]; }},
    {"leaves Int out of its range", "slot.values", kBetween, [](Host& h) { h.set_slot(0, 11999); }},
    {"leaves Float out of its range", "slot.values", kBetween, [](Host& h) { h.set_slot(1, 0x3f800000); }},
    {"leaves Float not a number", "slot.values", kBetween, [](Host& h) { h.set_slot(1, 0x7fc00000); }},
    {"gives Radio no choice", "slot.values", kBetween, [](Host& h) { h.set_slot(4, 3); }},
    {"cuts a text's address to 32 bits", "text.readable", kBetween, [](Host& h) { h.set_slot(3, 0x7000); }},
    {"gives a text without a NUL", "text.ends", kBetween,
     [](Host& h) { h.set_slot(3, low_page("", 'x', PROT_READ | PROT_WRITE)); }},
    {"gives a text in Latin 1", "text.ends", kBetween,
     [](Host& h) { h.set_slot(3, low_page("Gr\xfc\xdf", '\0', PROT_READ | PROT_WRITE)); }},
    {"gives a text without room", "text.room", kBetween, [](Host& h) { h.set_slot(7, low_page("", '\0', PROT_READ)); }},
    {"counts info texts and buttons", "change.index", kBetween,
     [](Host& h) {
         h.set_slot(1, std::bit_cast<uint32_t>(0.3f));
         stage::notify_changed(h.stage(), h.one, 2);
     }},
    {"counts past the parameters", "change.index", kBetween,
     [](Host& h) {
         h.call_as(h.one);
         h.calls().changed_callback(h.block(h.one), 9);
     }},
    {"changes between a frame and its pass", "change.between", kBetween,
     [](Host& h) {
         h.run_frames(1);
         h.set(h.one, "share", 0.3);
         stage::call_render(h.stage(), h.one, 0, 1);
     }},
    {"presses the button by its position", "action.number", kBetween,
     [](Host& h) { stage::execute_action(h.stage(), h.one, 0); }},
    {"counts frames from 0", "frame.counter", kFirst, [](Host& h) { h.stage().clock.retrace_counter = 0; }},
    {"runs a frame twice", "frame.counter", kBetween, [](Host& h) { stage::new_frame(h.stage()); }},
    {"sets no period", "frame.period", kFirst, [](Host& h) { h.services().refreshrate = [](double*) {}; }},
    {"has frames of no time", "frame.period", kFirst,
     [](Host& h) { h.services().refreshrate = [](double* seconds) { *seconds = 0; }; }},
    {"draws before all have simulated", "frame.order", kBetween,
     [](Host& h) {
         h.begin_frame();
         h.new_geom(h.one);
         stage::call_render(h.stage(), h.one, 0, 1);
         h.new_geom(h.two);
     }},
    {"changes the order of instances", "frame.order", kBetween,
     [](Host& h) {
         h.begin_frame();
         h.new_geom(h.two);
         h.new_geom(h.one);
     }},
    {"draws without simulating", "frame.order", kBetween,
     [](Host& h) {
         h.begin_frame();
         stage::call_render(h.stage(), h.one, 0, 1);
     }},
    {"gives opacity as a byte", "pass.opacity", kBetween, [](Host& h) { h.run_frame(255); }},
    {"gives all instances one geometry", "object.local", kFirst,
     [](Host& h) {
         h.services().get_objectid_local = [&h](const char* name, int32_t) {
             return *name == '\0' ? h.one : h.geometry(h.one);
         };
     }},
    {"forgets after a request who was called", "object.local", kFirst,
     [](Host& h) {
         h.services().geom_dispatcher = [&h](int32_t geometry, int32_t request, void* data, void* reply) {
             const int32_t taken = _api__geom_dispatcher(geometry, request, data, reply);
             if (h.is_probe(geometry)) h.services().get_objectid_local = [](const char*, int32_t) { return -1; };
             return taken;
         };
     }},
    {"says that -1 exists", "object.valid", kFirst,
     [](Host& h) {
         h.services().object_valid = [](int32_t object) { return object == -1 ? 1 : _api__object_valid(object); };
     }},
    {"says that nothing exists", "object.valid", kFirst,
     [](Host& h) { h.services().object_valid = [](int32_t) { return 0; }; }},
    {"finds any container", "object.none", kFirst,
     [](Host& h) { h.services().get_objectid = [&h](auto...) { return h.shape; }; }},
    {"finds no image as 0", "object.none", kFirst,
     [](Host& h) {
         h.services().get_image_objectid = [](const char* name) {
             const int32_t image = _api__get_image_objectid(name);
             return image == -1 ? 0 : image;
         };
     }},
    {"sets a matrix of no container", "out.values", kFirst,
     [](Host& h) {
         h.services().container_get_inverse_matrix = [](int32_t handle, float* matrix) {
             if (handle == -1) *matrix = 1;
             _api__container_get_inverse_matrix(handle, matrix);
         };
     }},
    {"sets the pixels of no image", "out.values", kFirst,
     [](Host& h) {
         h.services().get_image_data = [](int32_t image, uint8_t** pixels) {
             if (image == -1) *pixels = nullptr;
             _api__get_image_data(image, pixels);
         };
     }},
    {"sets the info of no mesh access", "out.invalid", kFirst,
     [](Host& h) {
         h.services().geomod_get_info = [](int32_t access, int32_t* vertices, int32_t* meshes, uint8_t* a, uint8_t* b,
                                           uint8_t* c) {
             *c = 0;
             _api__geomod_get_info(access, vertices, meshes, a, b, c);
         };
     }},
    {"takes handles for indices", "out.invalid", kFirst,
     [](Host& h) {
         h.services().get_camera_tilt = [](int32_t camera, float* degrees) {
             if (camera >= 0) *degrees = 0;
             _api__get_camera_tilt(camera, degrees);
         };
     }},
    {"sets no matrix", "matrix.inverse", kFirst,
     [](Host& h) { h.services().container_get_inverse_matrix = [](int32_t, float*) {}; }},
    {"gives the matrix as its inverse", "matrix.inverse", kFirst,
     [](Host& h) { h.services().container_get_inverse_matrix = _api__container_get_transformation_matrix; }},
    {"gives the position in the parent", "matrix.placement", kFirst,
     [](Host& h) {
         h.services().container_get_absolute_position = [&h](int32_t handle, float* x, float* y, float* z) {
             if (!find_container(h.stage(), handle)) return;
             const auto& position = h.container(handle).placement.position;
             *x = position.x, *y = position.y, *z = position.z;
         };
     }},
    {"turns about Z first", "matrix.placement", kFirst,
     [](Host& h) {
         h.services().container_get_absolute_rotation = [](int32_t handle, float* x, float* y, float* z) {
             _api__container_get_absolute_rotation(handle, z, y, x);
         };
     }},
    {"scales along the world's axes", "matrix.placement", kFirst,
     [](Host& h) {
         h.services().container_get_absolute_scaling = [](int32_t handle, float* x, float* y, float* z) {
             _api__container_get_absolute_scaling(handle, y, x, z);
         };
     }},
    {"gives a plug-in meshes", "mesh.none", kFirst,
     [](Host& h) {
         h.services().get_geom_geomod = [&h](int32_t geometry, int32_t kind, int32_t detail, int32_t* access) {
             _api__get_geom_geomod(geometry, kind, detail, access);
             if (h.is_probe(geometry)) *access = 5;
         };
     }},
    {"counts the vertices of one mesh", "mesh.counts", kFirst,
     [](Host& h) {
         h.services().geomod_get_info = [](int32_t access, int32_t* vertices, int32_t* meshes, uint8_t* a, uint8_t* b,
                                           uint8_t* c) {
             _api__geomod_get_info(access, vertices, meshes, a, b, c);
             if (access != 0) *vertices = 3;
         };
     }},
    {"sets no vertex", "mesh.counts", kFirst,
     [](Host& h) { h.services().geomod_get_vertex = [](int32_t, int32_t, float*, float*, float*) {}; }},
    {"sets no format", "image.pixels", kFirst,
     [](Host& h) { h.services().get_image_format = [](int32_t, int32_t*) {}; }},
    {"gives too few pixels", "image.pixels", kFirst,
     [](Host& h) {
         h.services().get_image_data = [](int32_t image, uint8_t** pixels) {
             static const uintptr_t page = low_page("", '\0', PROT_READ);
             if (_api__object_valid(image)) *pixels = reinterpret_cast<uint8_t*>(page + 4090);
         };
     }},
    {"gives the camera's position to the origin", "camera.view", kFirst,
     [](Host& h) {
         h.services().get_position = [](int32_t object, float* x, float* y, float* z) {
             _api__get_position(object, x, y, z);
             if (*x == 300) *x = 0;
         };
     }},
    {"scales the view", "camera.view", kFirst,
     [](Host& h) {
         h.services().get_camera_view_matrix = [&h](int32_t camera, float* matrix) {
             _api__get_camera_view_matrix(camera, matrix);
             if (camera == h.stage().camera_handle) matrix[0] *= 1.5f;
         };
     }},
    {"pans to the right", "camera.angles", kFirst,
     [](Host& h) {
         h.services().get_camera_pan = [&h](int32_t camera, float* degrees) {
             _api__get_camera_pan(camera, degrees);
             if (camera == h.stage().camera_handle) *degrees *= -1;
         };
     }},
    {"takes requests for nobody", "dispatch.none", kFirst,
     [](Host& h) {
         h.services().geom_dispatcher = [](int32_t geometry, int32_t request, void* data, void* reply) {
             _api__geom_dispatcher(geometry, request, data, reply);
             return 1;
         };
     }},
    {"passes no data on", "dispatch.other", kFirst,
     [](Host& h) {
         h.services().geom_dispatcher = [](int32_t geometry, int32_t request, void*, void* reply) {
             return _api__geom_dispatcher(geometry, request, nullptr, reply);
         };
     }},
    {"passes a reply of its own on", "dispatch.other", kFirst,
     [](Host& h) {
         h.services().geom_dispatcher = [](int32_t geometry, int32_t request, void* data, void*) {
             int32_t reply = 0;
             return _api__geom_dispatcher(geometry, request, data, &reply);
         };
     }},
    {"draws 15 random bits of 31", "random.range", kFirst, [](Host&) { only_15_random_bits = true; }},
    {"leaves another matrix mode", "gl.matrices", kInPass, [](Host&) { glMatrixMode(GL_PROJECTION); }},
    {"puts the view into GL_MODELVIEW", "gl.matrices", kInPass,
     [](Host& h) { glMultMatrixf(stage::view_matrix(h.stage().camera).data()); }},
    {"leaves the view out of GL_PROJECTION", "gl.matrices", kInPass,
     [](Host& h) {
         glMatrixMode(GL_PROJECTION);
         glLoadMatrixf(stage::projection_matrix(h.stage().camera, 1.5f).data());
         glMatrixMode(GL_MODELVIEW);
     }},
    {"does not scale texture coordinates", "gl.matrices", kInPass,
     [](Host&) {
         glMatrixMode(GL_TEXTURE);
         glLoadIdentity();
         glMatrixMode(GL_MODELVIEW);
     }},
    {"leaves the depth mask off", "gl.state", kInPass, [](Host&) { glDepthMask(GL_FALSE); }},
    {"leaves a client array on", "gl.state", kInPass, [](Host&) { glEnableClientState(GL_NORMAL_ARRAY); }},
    {"leaves a buffer bound", "gl.state", kInPass, [](Host&) { glBindBuffer(GL_ARRAY_BUFFER, 1); }},
    {"leaves another texture unit", "gl.state", kInPass, [](Host&) { glClientActiveTexture(GL_TEXTURE1); }},
};

void run_host(const Wrong* wrong) {
    Host host;
    const auto act = [&](When when) {
        if (wrong && wrong->when == when) wrong->deed(host);
    };
    host.in_opengl = wrong == nullptr || wrong->when == kInPass;
    if (host.in_opengl) {
        static auto context = stage::OpenGlContext::create();
        if (!context || !context->make_current()) return;
        if (wrong) host.in_pass = wrong->deed;
    }
    act(kFirst);
    host.add_probes();
    for (int i = 0; i < 2; ++i) host.run_frame();
    host.set(host.one, "choice", "Third");
    host.set(host.two, "word", "haze");
    stage::execute_action(host.stage(), host.one, 7);
    if (!wrong) std::cout << "answer: " << std::get<std::string>(host.get({host.one, -1}, "answer")) << std::endl;
    host.run_frame();
    act(kBetween);
    host.services().get_objectid_local =
        wrong && wrong->when == kBetween ? nullptr : host.services().get_objectid_local;
    host.run_frame();
    act(kLast);
    stage::remove_instances(host.stage());
}

// Runs the host in a child process and returns its output. The probe keeps its results as long as its library is
// loaded, so that each run needs its own process.
std::string report_on(const Wrong* wrong) {
    int ends[2];
    if (pipe(ends) != 0) return "";
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        run_host(wrong);
        std::exit(0);
    }
    close(ends[1]);
    std::string report;
    char piece[4096];
    for (ssize_t n; (n = read(ends[0], piece, sizeof piece)) > 0;) report.append(piece, static_cast<size_t>(n));
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status) << report;
    return report;
}

std::set<std::string> failed_checks(const std::string& report) {
    std::set<std::string> names;
    std::istringstream lines(report);
    for (std::string word, name; lines >> word;)
        if (word == "FAIL" && lines >> name) names.insert(name);
    return names;
}

TEST(Probe, FindsNoFaultInTheStage) {
    const std::string report = report_on(nullptr);
    EXPECT_THAT(report, testing::HasSubstr("answer: TovuProbe: PASS: 35 of 35 checks ran, 0 failed, 0 skipped\n"));
    EXPECT_THAT(report, testing::Not(testing::HasSubstr("FAIL")));
}

TEST(Probe, FindsEachFaultAndNoOther) {
    for (const Wrong& wrong : kWrongs) {
        const std::string report = report_on(&wrong);
        EXPECT_THAT(failed_checks(report), testing::ElementsAre(wrong.check)) << wrong.name << "\n" << report;
        EXPECT_THAT(report, testing::HasSubstr("TovuProbe: FAIL: ")) << wrong.name;
    }
}

}  // namespace
}  // namespace tovu
