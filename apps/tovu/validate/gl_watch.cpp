#include "gl_watch.h"

#include <epoxy/gl.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <string>

#include "gl_arrays.h"
#include "stage/call_log.h"
#include "stage/opengl_table/dispatch.h"
#include "watch.h"

namespace tovu::validate {
namespace {

struct MatrixStack {
    const char* name;
    unsigned int mode;
    int limit;  // the depth that every OpenGL supports
    int depth = 1;
    bool changed = false;  // changed at depth 1
};

constexpr int kNoPrimitive = -1;

using Arrays = std::array<ClientArray, 6>;

struct State {
    bool is_reduced = false;
    int primitive = kNoPrimitive;  // of the open glBegin
    int vertices = 0;              // since glBegin
    Arrays arrays = {{{"GL_VERTEX_ARRAY", GL_VERTEX_ARRAY},
                      {"GL_COLOR_ARRAY", GL_COLOR_ARRAY},
                      {"GL_TEXTURE_COORD_ARRAY", GL_TEXTURE_COORD_ARRAY},
                      {"GL_NORMAL_ARRAY", GL_NORMAL_ARRAY},
                      {"GL_INDEX_ARRAY", GL_INDEX_ARRAY},
                      {"GL_EDGE_FLAG_ARRAY", GL_EDGE_FLAG_ARRAY}}};
    Arrays arrays_before;  // before the pass
    std::array<MatrixStack, 3> stacks = {
        {{"GL_MODELVIEW", GL_MODELVIEW, 32}, {"GL_PROJECTION", GL_PROJECTION, 2}, {"GL_TEXTURE", GL_TEXTURE, 2}}};
    size_t stack = 0;               // index of the current stack
    std::set<std::string> changed;  // names of state that differs from the host's
};

State& state() {
    static State the_state;  // global, since OpenGL functions cannot receive it as an argument
    return the_state;
}

struct Name {
    unsigned int code;
    const char* words;
};

// clang-format off
#define NAME(code) {code, #code}
constexpr Name kPrimitives[] = {
    NAME(GL_POINTS), NAME(GL_LINES), NAME(GL_LINE_LOOP), NAME(GL_LINE_STRIP), NAME(GL_TRIANGLES),
    NAME(GL_TRIANGLE_STRIP), NAME(GL_TRIANGLE_FAN), NAME(GL_QUADS), NAME(GL_QUAD_STRIP), NAME(GL_POLYGON)};
constexpr int kVerticesOfOne[] = {1, 2, 2, 2, 3, 3, 3, 4, 4, 3};
constexpr int kVerticesEach[] = {1, 2, 1, 1, 3, 1, 1, 4, 2, 1};
constexpr Name kCapabilities[] = {
    NAME(GL_ALPHA_TEST), NAME(GL_AUTO_NORMAL), NAME(GL_BLEND), NAME(GL_CLIP_PLANE0), NAME(GL_CLIP_PLANE1),
    NAME(GL_CLIP_PLANE2), NAME(GL_CLIP_PLANE3), NAME(GL_CLIP_PLANE4), NAME(GL_CLIP_PLANE5), NAME(GL_COLOR_LOGIC_OP),
    NAME(GL_COLOR_MATERIAL), NAME(GL_CULL_FACE), NAME(GL_DEPTH_TEST), NAME(GL_DITHER), NAME(GL_FOG),
    NAME(GL_INDEX_LOGIC_OP), NAME(GL_LIGHT0), NAME(GL_LIGHT1), NAME(GL_LIGHT2), NAME(GL_LIGHT3), NAME(GL_LIGHT4),
    NAME(GL_LIGHT5), NAME(GL_LIGHT6), NAME(GL_LIGHT7), NAME(GL_LIGHTING), NAME(GL_LINE_SMOOTH), NAME(GL_LINE_STIPPLE),
    NAME(GL_NORMALIZE), NAME(GL_POINT_SMOOTH), NAME(GL_POLYGON_SMOOTH), NAME(GL_POLYGON_STIPPLE),
    NAME(GL_SCISSOR_TEST), NAME(GL_STENCIL_TEST), NAME(GL_TEXTURE_1D), NAME(GL_TEXTURE_2D), NAME(GL_TEXTURE_GEN_S),
    NAME(GL_TEXTURE_GEN_T), NAME(GL_TEXTURE_GEN_R), NAME(GL_TEXTURE_GEN_Q), NAME(GL_POLYGON_OFFSET_FILL),
    NAME(GL_POLYGON_OFFSET_LINE), NAME(GL_POLYGON_OFFSET_POINT), NAME(GL_RESCALE_NORMAL), NAME(GL_MULTISAMPLE)};
constexpr Name kHints[] = {
    NAME(GL_FOG_HINT), NAME(GL_LINE_SMOOTH_HINT), NAME(GL_PERSPECTIVE_CORRECTION_HINT), NAME(GL_POINT_SMOOTH_HINT),
    NAME(GL_POLYGON_SMOOTH_HINT)};
constexpr Name kHintModes[] = {NAME(GL_FASTEST), NAME(GL_NICEST), NAME(GL_DONT_CARE)};
// clang-format on

/// Capabilities that are on at the start of a pass.
constexpr unsigned int kOnAtFirst[] = {GL_BLEND,  GL_ALPHA_TEST, GL_DEPTH_TEST,
                                       GL_DITHER, GL_TEXTURE_2D, GL_MULTISAMPLE};

template <size_t count>
const char* name_in(const Name (&names)[count], unsigned int code) {
    const auto* found = std::find_if(names, names + count, [code](const Name& name) { return name.code == code; });
    return found == names + count ? nullptr : found->words;
}

void fault(const std::string& message, const std::string& right) {
    fail("gl.pass", message, right);
}

bool is_running(std::string_view entry_point) {
    const Watch& w = watch();
    return w.stage && !w.stage->running.empty() && w.stage->running.back().entry_point == entry_point;
}

enum class Place {
    kPass,     // in a pass, outside of glBegin and glEnd
    kAnywhere  // anywhere in a pass
};

/// Checks the thread and the entry point of the call. False if the call must be ignored.
bool admit(const char* call, Place place) {
    if (!on_host_thread()) {
        fail("thread.host", fmt::format("{} was called from another thread", call),
             "draw only inside PLUGIN_RENDER_OPENGL, on the thread that called it");
        return false;
    }
    const bool is_drawing = is_running("PLUGIN_RENDER_OPENGL");
    const bool sets_pointer = std::string_view(call).ends_with("Pointer");
    if (!is_drawing && !(sets_pointer && is_running("PLUGIN_INIT_FUNCTION"))) {
        const bool is_loading = !watch().stage || watch().stage->running.empty();
        fail(is_loading ? "load.init" : "gl.outside",
             fmt::format("{} was called outside of PLUGIN_RENDER_OPENGL", call),
             "draw inside PLUGIN_RENDER_OPENGL only");
        return false;
    }
    if (is_drawing && place == Place::kPass && state().primitive != kNoPrimitive)
        fault(fmt::format("{} was called between glBegin and glEnd", call), "call glEnd first");
    return true;
}

void note_changed(bool differs, const std::string& what) {
    if (differs)
        state().changed.insert(what);
    else
        state().changed.erase(what);
}

void begin(unsigned int mode) {
    State& s = state();
    if (!name_in(kPrimitives, mode))
        fault(fmt::format("glBegin({:#x}) names no primitive", mode), "GL_POINTS to GL_POLYGON");
    if (s.primitive != kNoPrimitive) fault("glBegin was called between glBegin and glEnd", "call glEnd first");
    s.primitive = mode <= GL_POLYGON ? static_cast<int>(mode) : GL_POINTS;
    s.vertices = 0;
}

void check_whole(const char* call, int primitive, int vertices) {
    if (vertices == 0) return;
    const int one = kVerticesOfOne[primitive];
    const int each = kVerticesEach[primitive];
    if (vertices >= one && vertices % each == 0) return;
    fail("gl.values", fmt::format("{} drew {} of {} vertices", call, kPrimitives[primitive].words, vertices),
         each > 1 ? fmt::format("a multiple of {}", each) : fmt::format("at least {}", one));
}

void end() {
    State& s = state();
    if (s.primitive == kNoPrimitive) return fault("glEnd was called without glBegin", "call glBegin before");
    check_whole("glBegin", s.primitive, s.vertices);
    s.primitive = kNoPrimitive;
}

void vertex(float x, float y, float z) {
    if (state().primitive == kNoPrimitive)
        fault("a vertex was given outside of glBegin and glEnd", "call glBegin before");
    ++state().vertices;
    check_finite("glVertex3f", {x, y, z});
}

void check_color(const char* call) {
    if (state().is_reduced)
        fault(fmt::format("{} was called in a reduced pass", call),
              "leave colours to the host where bit 0 of the flags is set");
}

void color_4f(float red, float green, float blue, float alpha) {
    check_color("glColor4f");
    check_finite("glColor4f", {red, green, blue, alpha});
}

void color_4ub(unsigned char, unsigned char, unsigned char, unsigned char) {
    check_color("glColor4ub");
}

void tex_coord(short, short) {}

void vertex_pointer(int size, unsigned int type, int stride, const void* pointer) {
    set_pointer(state().arrays[0], "glVertexPointer", 2, {GL_SHORT, GL_INT, GL_FLOAT, GL_DOUBLE}, size, type, stride,
                pointer);
}

void color_pointer(int size, unsigned int type, int stride, const void* pointer) {
    set_pointer(state().arrays[1], "glColorPointer", 3,
                {GL_BYTE, GL_UNSIGNED_BYTE, GL_SHORT, GL_UNSIGNED_SHORT, GL_INT, GL_UNSIGNED_INT, GL_FLOAT, GL_DOUBLE},
                size, type, stride, pointer);
}

void tex_coord_pointer(int size, unsigned int type, int stride, const void* pointer) {
    set_pointer(state().arrays[2], "glTexCoordPointer", 1, {GL_SHORT, GL_INT, GL_FLOAT, GL_DOUBLE}, size, type, stride,
                pointer);
}

void draw_arrays(unsigned int mode, int first, int count) {
    const Arrays& arrays = state().arrays;
    if (!name_in(kPrimitives, mode))
        return fault(fmt::format("glDrawArrays({:#x}, …) names no primitive", mode), "GL_POINTS to GL_POLYGON");
    if (first < 0 || count < 0)
        return fault(fmt::format("glDrawArrays was given first {} and count {}", first, count), "0 or more");
    bool all_readable = true;
    for (const ClientArray& array : arrays)
        if (array.enabled) all_readable = check_array(array, first, count) && all_readable;
    if (!arrays[0].enabled)
        return fail("gl.arrays", "glDrawArrays was called while GL_VERTEX_ARRAY is off",
                    "enable it with glEnableClientState");
    check_whole("glDrawArrays", static_cast<int>(mode), count);
    for (const ClientArray& array : arrays) {
        if (!array.enabled || !all_readable) continue;
        check_array_values(array, first, count);
        if (stage::is_recording_calls()) record_array(array, first, count);
    }
}

void set_client_state(const char* call, unsigned int code, bool enabled) {
    for (ClientArray& array : state().arrays) {
        if (array.code != code) continue;
        array.enabled = enabled;
        return note_changed(enabled, fmt::format("{} on", array.name));
    }
    fault(fmt::format("{}({:#x}) names no array", call, code),
          "GL_VERTEX_ARRAY, GL_COLOR_ARRAY or GL_TEXTURE_COORD_ARRAY");
}

void enable_client_state(unsigned int array) {
    set_client_state("glEnableClientState", array, true);
}

void disable_client_state(unsigned int array) {
    set_client_state("glDisableClientState", array, false);
}

void set_capability(const char* call, unsigned int code, bool enabled) {
    const char* name = name_in(kCapabilities, code);
    if (!name)
        return fault(fmt::format("{}({:#x}) names nothing that OpenGL 1.1 can switch", call, code),
                     "a capability of OpenGL 1.1");
    if (state().is_reduced && (code == GL_BLEND || code == GL_ALPHA_TEST || code == GL_LIGHTING))
        fault(fmt::format("{}({}) was called in a reduced pass", call, name),
              "leave it to the host where bit 0 of the flags is set");
    const bool before = std::find(std::begin(kOnAtFirst), std::end(kOnAtFirst), code) != std::end(kOnAtFirst);
    note_changed(enabled != before, fmt::format("{} {}", name, before ? "off" : "on"));
}

void enable(unsigned int capability) {
    set_capability("glEnable", capability, true);
}

void disable(unsigned int capability) {
    set_capability("glDisable", capability, false);
}

void depth_mask(unsigned char flag) {
    note_changed(flag == 0, "the depth mask off");
}

void hint(unsigned int target, unsigned int mode) {
    if (!name_in(kHints, target))
        fault(fmt::format("glHint was given the target {:#x}", target), "a hint of OpenGL 1.1");
    if (!name_in(kHintModes, mode))
        fault(fmt::format("glHint was given the mode {:#x}", mode), "GL_FASTEST, GL_NICEST or GL_DONT_CARE");
    note_changed(mode != GL_DONT_CARE, "a hint");
}

void set_size(const char* call, float size) {
    if (!(size > 0)) fault(fmt::format("{}({})", call, size), "above 0");
    note_changed(size != 1, fmt::format("{} {}", call, size));
}

void line_width(float width) {
    set_size("glLineWidth", width);
}

void point_size(float size) {
    set_size("glPointSize", size);
}

void matrix_mode(unsigned int mode) {
    State& s = state();
    const auto found =
        std::find_if(s.stacks.begin(), s.stacks.end(), [mode](const MatrixStack& m) { return m.mode == mode; });
    if (found == s.stacks.end())
        return fault(fmt::format("glMatrixMode({:#x}) names no matrix", mode),
                     "GL_MODELVIEW, GL_PROJECTION or GL_TEXTURE");
    s.stack = static_cast<size_t>(found - s.stacks.begin());
    note_changed(s.stack != 0, "the matrix mode");
}

MatrixStack& current_stack() {
    return state().stacks[state().stack];
}

void change_matrix() {
    if (current_stack().depth == 1) current_stack().changed = true;
}

void push_matrix() {
    MatrixStack& stack = current_stack();
    if (stack.depth == stack.limit)
        fault(fmt::format("glPushMatrix made the stack {} deeper than {}", stack.name, stack.limit),
              "as many glPopMatrix");
    ++stack.depth;
}

void pop_matrix() {
    MatrixStack& stack = current_stack();
    if (stack.depth == 1)
        return fault(fmt::format("glPopMatrix on {} without glPushMatrix", stack.name), "as many as glPushMatrix");
    --stack.depth;
}

void multiply(const float* m) {
    for (int i = 0; i < 16; ++i) {
        stage::record_call("element of a matrix", i, m[i]);
        check_finite("glMultMatrixf", {m[i]});
    }
    change_matrix();
}

void translate(float x, float y, float z) {
    check_finite("glTranslatef", {x, y, z});
    change_matrix();
}

void begin_pass() {
    State& s = state();
    s.primitive = kNoPrimitive;
    s.arrays_before = s.arrays;
    for (ClientArray& array : s.arrays) array.enabled = false;
    for (MatrixStack& stack : s.stacks) {
        stack.depth = 1;
        stack.changed = false;
    }
    s.stack = 0;
    s.changed.clear();
}

void end_pass() {
    State& s = state();
    if (s.primitive != kNoPrimitive) fault("a glBegin was left without glEnd", "call glEnd before the pass ends");
    for (const MatrixStack& stack : s.stacks) {
        if (stack.depth != 1)
            fault(fmt::format("{} glPushMatrix on {} without glPopMatrix", stack.depth - 1, stack.name),
                  "as many of both");
        if (stack.changed) s.changed.insert(fmt::format("the matrix {}", stack.name));
    }
    std::string list;
    for (const std::string& what : s.changed) list += (list.empty() ? "" : ", ") + what;
    if (!list.empty()) found("gl.state", Weight::kNote, "a pass leaves changed: " + list, "");
    s.primitive = kNoPrimitive;
    s.arrays = s.arrays_before;
}

bool is_render(const stage::RunningCall& call) {
    return call.entry_point == std::string_view("PLUGIN_RENDER_OPENGL");
}

struct CallName {
    char text[24] = {};
    template <size_t count>
    constexpr CallName(const char (&name)[count]) {
        std::copy_n(name, count, text);
    }
};

/// The OpenGL function that the plug-in calls: records and checks the call. It runs as code of the host.
template <CallName name, auto check, Place place = Place::kPass, class... Arguments>
void watched(Arguments... arguments) {
    const bool is_hosts = on_host_thread();
    if (is_hosts) ++watch().host_depths.back();
    if (admit(name.text, place)) {
        stage::record_call(name.text, arguments...);
        check(arguments...);
    }
    if (is_hosts) --watch().host_depths.back();
}

constexpr stage::OpenGlDispatch kWatched = {
    .Begin = watched<"glBegin", begin, Place::kAnywhere>,
    .End = watched<"glEnd", end, Place::kAnywhere>,
    .Vertex3f = watched<"glVertex3f", vertex, Place::kAnywhere>,
    .Vertex3fv = [](const float* v) { watched<"glVertex3fv", vertex, Place::kAnywhere>(v[0], v[1], v[2]); },
    .Color4f = watched<"glColor4f", color_4f, Place::kAnywhere>,
    .Color4ub = watched<"glColor4ub", color_4ub, Place::kAnywhere>,
    .TexCoord2s = watched<"glTexCoord2s", tex_coord, Place::kAnywhere>,
    .VertexPointer = watched<"glVertexPointer", vertex_pointer>,
    .ColorPointer = watched<"glColorPointer", color_pointer>,
    .TexCoordPointer = watched<"glTexCoordPointer", tex_coord_pointer>,
    .DrawArrays = watched<"glDrawArrays", draw_arrays>,
    .EnableClientState = watched<"glEnableClientState", enable_client_state>,
    .DisableClientState = watched<"glDisableClientState", disable_client_state>,
    .Enable = watched<"glEnable", enable>,
    .Disable = watched<"glDisable", disable>,
    .DepthMask = watched<"glDepthMask", depth_mask>,
    .Hint = watched<"glHint", hint>,
    .LineWidth = watched<"glLineWidth", line_width>,
    .PointSize = watched<"glPointSize", point_size>,
    .MatrixMode = watched<"glMatrixMode", matrix_mode>,
    .LoadIdentity = watched<"glLoadIdentity", change_matrix>,
    .PushMatrix = watched<"glPushMatrix", push_matrix>,
    .PopMatrix = watched<"glPopMatrix", pop_matrix>,
    .MultMatrixf = watched<"glMultMatrixf", multiply>,
    .Translatef = watched<"glTranslatef", translate>,
};

}  // namespace

void watch_opengl() {
    stage::use_opengl(kWatched);
    watch().on_entry.push_back([](const stage::RunningCall& call) {
        if (is_render(call)) begin_pass();
    });
    watch().on_return.push_back([](const stage::RunningCall& call) {
        if (is_render(call)) end_pass();
    });
}

void expect_reduced_pass(bool is_reduced) {
    state().is_reduced = is_reduced;
}

}  // namespace tovu::validate
