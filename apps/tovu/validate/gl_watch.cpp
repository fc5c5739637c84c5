#include "gl_watch.h"

#include <epoxy/gl.h>
#include <fmt/format.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "elf_file.h"
#include "heap_watch.h"
#include "stage/call_log.h"
#include "stage/opengl_table/dispatch.h"
#include "watch.h"

namespace tovu::validate {
namespace {

struct ClientArray {
    const char* name;
    unsigned int code;
    bool enabled = false;
    int size = 0;
    unsigned int type = 0;
    int stride = 0;
    const void* pointer = nullptr;
    int64_t entry_number = 0;  // of the entry point that set the pointer
};

struct MatrixStack {
    const char* name;
    unsigned int mode;
    int limit;  // the smallest depth that OpenGL promises
    int depth = 1;
    bool changed = false;  // below any push of the pass
};

constexpr int kNoPrimitive = -1;

struct State {
    const ElfFile* library = nullptr;
    bool is_reduced = false;
    int primitive = kNoPrimitive;  // of the open glBegin
    int vertices = 0;              // since
    std::array<ClientArray, 6> arrays = {{{"GL_VERTEX_ARRAY", GL_VERTEX_ARRAY},
                                          {"GL_COLOR_ARRAY", GL_COLOR_ARRAY},
                                          {"GL_TEXTURE_COORD_ARRAY", GL_TEXTURE_COORD_ARRAY},
                                          {"GL_NORMAL_ARRAY", GL_NORMAL_ARRAY},
                                          {"GL_INDEX_ARRAY", GL_INDEX_ARRAY},
                                          {"GL_EDGE_FLAG_ARRAY", GL_EDGE_FLAG_ARRAY}}};
    std::array<MatrixStack, 3> stacks = {
        {{"GL_MODELVIEW", GL_MODELVIEW, 32}, {"GL_PROJECTION", GL_PROJECTION, 2}, {"GL_TEXTURE", GL_TEXTURE, 2}}};
    size_t stack = 0;            // the current one
    std::set<std::string> left;  // state that differs from the host's
    std::array<ClientArray, 6> arrays_before;
    int64_t entry_number = 0;
};

State& state() {
    static State the_state;  // the calls have no argument that could carry it
    return the_state;
}

struct Name {
    unsigned int code;
    const char* words;
};

#define NAME(code) \
    { code, #code }
constexpr Name kPrimitives[] = {
    NAME(GL_POINTS),         NAME(GL_LINES),        NAME(GL_LINE_LOOP), NAME(GL_LINE_STRIP), NAME(GL_TRIANGLES),
    NAME(GL_TRIANGLE_STRIP), NAME(GL_TRIANGLE_FAN), NAME(GL_QUADS),     NAME(GL_QUAD_STRIP), NAME(GL_POLYGON)};
constexpr int kVerticesOfOne[] = {1, 2, 2, 2, 3, 3, 3, 4, 4, 3};
constexpr int kVerticesEach[] = {1, 2, 1, 1, 3, 1, 1, 4, 2, 1};
constexpr Name kCapabilities[] = {NAME(GL_ALPHA_TEST),
                                  NAME(GL_AUTO_NORMAL),
                                  NAME(GL_BLEND),
                                  NAME(GL_CLIP_PLANE0),
                                  NAME(GL_CLIP_PLANE1),
                                  NAME(GL_CLIP_PLANE2),
                                  NAME(GL_CLIP_PLANE3),
                                  NAME(GL_CLIP_PLANE4),
                                  NAME(GL_CLIP_PLANE5),
                                  NAME(GL_COLOR_LOGIC_OP),
                                  NAME(GL_COLOR_MATERIAL),
                                  NAME(GL_CULL_FACE),
                                  NAME(GL_DEPTH_TEST),
                                  NAME(GL_DITHER),
                                  NAME(GL_FOG),
                                  NAME(GL_INDEX_LOGIC_OP),
                                  NAME(GL_LIGHT0),
                                  NAME(GL_LIGHT1),
                                  NAME(GL_LIGHT2),
                                  NAME(GL_LIGHT3),
                                  NAME(GL_LIGHT4),
                                  NAME(GL_LIGHT5),
                                  NAME(GL_LIGHT6),
                                  NAME(GL_LIGHT7),
                                  NAME(GL_LIGHTING),
                                  NAME(GL_LINE_SMOOTH),
                                  NAME(GL_LINE_STIPPLE),
                                  NAME(GL_NORMALIZE),
                                  NAME(GL_POINT_SMOOTH),
                                  NAME(GL_POLYGON_SMOOTH),
                                  NAME(GL_POLYGON_STIPPLE),
                                  NAME(GL_SCISSOR_TEST),
                                  NAME(GL_STENCIL_TEST),
                                  NAME(GL_TEXTURE_1D),
                                  NAME(GL_TEXTURE_2D),
                                  NAME(GL_TEXTURE_GEN_S),
                                  NAME(GL_TEXTURE_GEN_T),
                                  NAME(GL_TEXTURE_GEN_R),
                                  NAME(GL_TEXTURE_GEN_Q),
                                  NAME(GL_POLYGON_OFFSET_FILL),
                                  NAME(GL_POLYGON_OFFSET_LINE),
                                  NAME(GL_POLYGON_OFFSET_POINT),
                                  NAME(GL_RESCALE_NORMAL),
                                  NAME(GL_MULTISAMPLE)};
constexpr Name kHints[] = {NAME(GL_FOG_HINT), NAME(GL_LINE_SMOOTH_HINT), NAME(GL_PERSPECTIVE_CORRECTION_HINT),
                           NAME(GL_POINT_SMOOTH_HINT), NAME(GL_POLYGON_SMOOTH_HINT)};
constexpr Name kHintModes[] = {NAME(GL_FASTEST), NAME(GL_NICEST), NAME(GL_DONT_CARE)};
/// What a pass begins with, of what a plug-in can switch.
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

/// Checks where the call is made. False: it is refused.
bool admit(const char* call, bool may_be_between, bool sets_pointer) {
    if (!on_host_thread()) {
        fail("thread.host", fmt::format("{} was called from another thread", call),
             "draw only inside PLUGIN_RENDER_OPENGL, on the thread that called it");
        return false;
    }
    const Watch& w = watch();
    const bool is_drawing = w.stage && !w.stage->running.empty() &&
                            w.stage->running.back().entry_point == std::string_view("PLUGIN_RENDER_OPENGL");
    const bool is_initialising = w.stage && !w.stage->running.empty() &&
                                 w.stage->running.back().entry_point == std::string_view("PLUGIN_INIT_FUNCTION");
    if (!is_drawing && !(sets_pointer && is_initialising)) {
        const bool is_loading = !w.stage || w.stage->running.empty();
        fail(is_loading ? "load.init" : "gl.outside",
             fmt::format("{} was called outside of PLUGIN_RENDER_OPENGL", call),
             "draw inside PLUGIN_RENDER_OPENGL only");
        return false;
    }
    if (is_drawing && !may_be_between && state().primitive != kNoPrimitive)
        fault(fmt::format("{} was called between glBegin and glEnd", call), "call glEnd first");
    return true;
}

void note_left(bool differs, const std::string& what) {
    if (differs)
        state().left.insert(what);
    else
        state().left.erase(what);
}

bool is_finite(const float* numbers, int count) {
    return std::all_of(numbers, numbers + count, [](float number) { return std::isfinite(number); });
}

void check_numbers(const char* call, const float* numbers, int count) {
    if (is_finite(numbers, count)) return;
    std::string list;
    for (int i = 0; i < count; ++i) list += fmt::format("{}{}", i ? ", " : "", numbers[i]);
    fail("gl.values", fmt::format("{}({})", call, count > 4 ? "…" : list), "finite numbers");
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

void vertex(const char* call, const float* xyz) {
    State& s = state();
    if (s.primitive == kNoPrimitive)
        fault(fmt::format("{} was called outside of glBegin and glEnd", call), "call glBegin before");
    ++s.vertices;
    check_numbers(call, xyz, 3);
}

void color(const char* call) {
    if (state().is_reduced)
        fault(fmt::format("{} was called in a reduced pass", call),
              "leave colours to the host where bit 0 of the flags is set");
}

bool contains(std::initializer_list<unsigned int> codes, unsigned int code) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

void set_pointer(const char* call, ClientArray& array, int smallest, std::initializer_list<unsigned int> types,
                 int size, unsigned int type, int stride, const void* pointer) {
    if (size < smallest || size > 4)
        fault(fmt::format("{} was given {} numbers a vertex", call, size), fmt::format("{} to 4", smallest));
    if (!contains(types, type))
        fault(fmt::format("{} was given the type {:#x}", call, type), "a type of OpenGL 1.1 for this array");
    if (stride < 0) fault(fmt::format("{} was given a stride of {}", call, stride), "0 or more");
    array.size = std::clamp(size, 1, 4);
    array.type = type;
    array.stride = stride;
    array.pointer = pointer;
    array.entry_number = state().entry_number;
}

size_t bytes_of_type(unsigned int type) {
    switch (type) {
        case GL_BYTE:
        case GL_UNSIGNED_BYTE:
            return 1;
        case GL_SHORT:
        case GL_UNSIGNED_SHORT:
            return 2;
        case GL_DOUBLE:
            return 8;
        default:
            return 4;
    }
}

size_t bytes_per_vertex(const ClientArray& array) {
    return static_cast<size_t>(array.size) * bytes_of_type(array.type);
}

size_t step_of(const ClientArray& array) {
    return array.stride > 0 ? static_cast<size_t>(array.stride) : bytes_per_vertex(array);
}

/// How many of the bytes can be read from the start.
size_t readable_bytes(uintptr_t address, size_t bytes) {
    std::vector<char> copy(std::min<size_t>(bytes, 1 << 16));
    size_t done = 0;
    while (done < bytes) {
        const iovec local{copy.data(), std::min(copy.size(), bytes - done)};
        const iovec remote{reinterpret_cast<void*>(address + done), local.iov_len};
        const ssize_t count = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
        if (count <= 0) break;
        done += static_cast<size_t>(count);
    }
    return done;
}

/// Why the array cannot be read, or empty.
std::string dangling_words(const ClientArray& array, uintptr_t start, size_t bytes) {
    const auto here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    constexpr uintptr_t kStackReach = 8u << 20;
    if (start < here && here - start < kStackReach) return "lies on the stack of a function that has returned";
    if (start >= here && start - here < kStackReach && array.entry_number != state().entry_number)
        return "lies on the stack of an earlier call";
    if (const HeapBlock* block = find_block(start)) {
        if (!block->is_live) return "was freed";
        if (start + bytes > block->address + block->bytes)
            return fmt::format("ends {} bytes after the block of {} bytes that it lies in",
                               start + bytes - block->address - block->bytes, block->bytes);
    }
    const SharedOutcome& outcome = *watch().outcome;
    if (start >= outcome.library_start && start < outcome.library_end && state().library) {
        const ElfSymbol* symbol = symbol_at(*state().library, start - outcome.library_start);
        const uint64_t end = symbol ? outcome.library_start + symbol->value + symbol->bytes : 0;
        if (symbol && start + bytes > end)
            return fmt::format("ends {} bytes after '{}'", start + bytes - end, plain_name(symbol->name));
    }
    if (const size_t readable = readable_bytes(start, bytes); readable < bytes)
        return fmt::format("can be read for {} of {} bytes only", readable, bytes);
    return "";
}

bool check_array(const ClientArray& array, int first, int count) {
    if (!array.enabled) return true;
    const std::string name = array.name;
    if (!array.pointer) {
        fail("gl.arrays", name + " is enabled and has no address", "set its pointer, or disable the array");
        return false;
    }
    if (count <= 0) return true;
    const uintptr_t start = reinterpret_cast<uintptr_t>(array.pointer) + static_cast<size_t>(first) * step_of(array);
    const size_t bytes = static_cast<size_t>(count - 1) * step_of(array) + bytes_per_vertex(array);
    const std::string words = dangling_words(array, start, bytes);
    if (words.empty()) return true;
    fail("gl.arrays", fmt::format("{} for {} vertices {}", name, count, words),
         "an array that lives until glDrawArrays returns and is long enough");
    return false;
}

template <class Number>
float number_at(const char* place) {
    Number number;
    std::memcpy(&number, place, sizeof number);
    return static_cast<float>(number);
}

/// Numbers of other types are finite.
void check_array_values(const ClientArray& array, int first, int count) {
    if (!array.enabled || (array.type != GL_FLOAT && array.type != GL_DOUBLE)) return;
    const auto* place = static_cast<const char*>(array.pointer) + static_cast<size_t>(first) * step_of(array);
    for (int i = 0; i < count; ++i, place += step_of(array)) {
        float numbers[4] = {};
        for (int c = 0; c < array.size; ++c)
            numbers[c] = array.type == GL_FLOAT ? number_at<float>(place + 4 * c) : number_at<double>(place + 8 * c);
        check_numbers(array.name, numbers, array.size);
    }
}

/// What a glDrawArrays reads goes into the call log as well, as one number for each array.
void record_arrays(int first, int count) {
    for (const ClientArray& array : state().arrays) {
        if (!array.enabled) continue;
        const auto* place = static_cast<const char*>(array.pointer) + static_cast<size_t>(first) * step_of(array);
        uint32_t hash = 2166136261u;  // FNV-1a
        for (int i = 0; i < count; ++i, place += step_of(array))
            for (size_t k = 0; k < bytes_per_vertex(array); ++k)
                hash = (hash ^ static_cast<unsigned char>(place[k])) * 16777619u;
        stage::record_call(array.name, count, hash);
    }
}

void draw_arrays(unsigned int mode, int first, int count) {
    State& s = state();
    if (!name_in(kPrimitives, mode))
        return fault(fmt::format("glDrawArrays({:#x}, …) names no primitive", mode), "GL_POINTS to GL_POLYGON");
    if (first < 0 || count < 0)
        return fault(fmt::format("glDrawArrays was given first {} and count {}", first, count), "0 or more");
    bool all_readable = true;
    for (const ClientArray& array : s.arrays) all_readable = check_array(array, first, count) && all_readable;
    const ClientArray& vertices = s.arrays[0];
    if (!vertices.enabled)
        return fail("gl.arrays", "glDrawArrays was called while GL_VERTEX_ARRAY is off",
                    "enable it with glEnableClientState");
    check_whole("glDrawArrays", static_cast<int>(mode), count);
    if (!all_readable) return;
    for (const ClientArray& array : s.arrays) check_array_values(array, first, count);
    if (stage::is_recording_calls()) record_arrays(first, count);
}

void set_client_state(const char* call, unsigned int code, bool enabled) {
    for (ClientArray& array : state().arrays) {
        if (array.code != code) continue;
        array.enabled = enabled;
        return note_left(enabled, fmt::format("{} on", array.name));
    }
    fault(fmt::format("{}({:#x}) names no array", call, code),
          "GL_VERTEX_ARRAY, GL_COLOR_ARRAY or GL_TEXTURE_COORD_ARRAY");
}

void set_capability(const char* call, unsigned int code, bool enabled) {
    const char* name = name_in(kCapabilities, code);
    if (!name)
        return fault(fmt::format("{}({:#x}) names nothing that OpenGL 1.1 can switch", call, code),
                     "a capability of OpenGL 1.1");
    if (state().is_reduced && contains({GL_BLEND, GL_ALPHA_TEST, GL_LIGHTING}, code))
        fault(fmt::format("{}({}) was called in a reduced pass", call, name),
              "leave it to the host where bit 0 of the flags is set");
    const bool before = std::find(std::begin(kOnAtFirst), std::end(kOnAtFirst), code) != std::end(kOnAtFirst);
    note_left(enabled != before, fmt::format("{} {}", name, before ? "off" : "on"));
}

void hint(unsigned int target, unsigned int mode) {
    if (!name_in(kHints, target))
        fault(fmt::format("glHint was given the target {:#x}", target), "a hint of OpenGL 1.1");
    if (!name_in(kHintModes, mode))
        fault(fmt::format("glHint was given the mode {:#x}", mode), "GL_FASTEST, GL_NICEST or GL_DONT_CARE");
    note_left(mode != GL_DONT_CARE, "a hint");
}

void set_size(const char* call, float size) {
    if (!(size > 0)) fault(fmt::format("{}({})", call, size), "above 0");
    note_left(size != 1, fmt::format("{} {}", call, size));
}

void matrix_mode(unsigned int mode) {
    State& s = state();
    const auto found =
        std::find_if(s.stacks.begin(), s.stacks.end(), [mode](const MatrixStack& m) { return m.mode == mode; });
    if (found == s.stacks.end())
        return fault(fmt::format("glMatrixMode({:#x}) names no matrix", mode),
                     "GL_MODELVIEW, GL_PROJECTION or GL_TEXTURE");
    s.stack = static_cast<size_t>(found - s.stacks.begin());
    note_left(s.stack != 0, "the matrix mode");
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
    s.left.clear();
}

void end_pass() {
    State& s = state();
    if (s.primitive != kNoPrimitive) fault("a glBegin was left without glEnd", "call glEnd before the pass ends");
    for (const MatrixStack& stack : s.stacks) {
        if (stack.depth != 1)
            fault(fmt::format("{} glPushMatrix on {} without glPopMatrix", stack.depth - 1, stack.name),
                  "as many of both");
        if (stack.changed) s.left.insert(fmt::format("the matrix {}", stack.name));
    }
    std::string list;
    for (const std::string& what : s.left) list += (list.empty() ? "" : ", ") + what;
    if (!list.empty()) found("gl.state", Weight::kNote, "a pass leaves changed: " + list, "");
    s.primitive = kNoPrimitive;
    s.arrays = s.arrays_before;
}

bool is_render(const stage::RunningCall& call) {
    return call.entry_point == std::string_view("PLUGIN_RENDER_OPENGL");
}

/// A call as it is checked: inside the host's code meanwhile.
class Call {
  public:
    Call(const char* name, bool may_be_between = false, bool sets_pointer = false) : is_hosts_(on_host_thread()) {
        if (is_hosts_) ++watch().host_depths.back();
        admitted_ = admit(name, may_be_between, sets_pointer);
    }
    ~Call() {
        if (is_hosts_) --watch().host_depths.back();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    explicit operator bool() const { return admitted_; }

  private:
    bool is_hosts_;  // called on its thread
    bool admitted_ = false;
};

constexpr stage::OpenGlDispatch kWatched = {
    .Begin =
        [](unsigned int mode) {
            if (const Call call{"glBegin", true}) {
                stage::record_call("glBegin", mode);
                begin(mode);
            }
        },
    .End =
        [] {
            if (const Call call{"glEnd", true}) {
                stage::record_call("glEnd");
                end();
            }
        },
    .Vertex3f =
        [](float x, float y, float z) {
            if (const Call call{"glVertex3f", true}) {
                stage::record_call("glVertex3f", x, y, z);
                const float xyz[] = {x, y, z};
                vertex("glVertex3f", xyz);
            }
        },
    .Vertex3fv =
        [](const float* xyz) {
            if (const Call call{"glVertex3fv", true}) {
                stage::record_call("glVertex3fv", xyz[0], xyz[1], xyz[2]);
                vertex("glVertex3fv", xyz);
            }
        },
    .Color4f =
        [](float red, float green, float blue, float alpha) {
            if (const Call call{"glColor4f", true}) {
                stage::record_call("glColor4f", red, green, blue, alpha);
                const float numbers[] = {red, green, blue, alpha};
                color("glColor4f");
                check_numbers("glColor4f", numbers, 4);
            }
        },
    .Color4ub =
        [](unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha) {
            if (const Call call{"glColor4ub", true}) {
                stage::record_call("glColor4ub", red, green, blue, alpha);
                color("glColor4ub");
            }
        },
    .TexCoord2s =
        [](short s, short t) {
            if (const Call call{"glTexCoord2s", true}) stage::record_call("glTexCoord2s", s, t);
        },
    .VertexPointer =
        [](int size, unsigned int type, int stride, const void* pointer) {
            if (const Call call{"glVertexPointer", false, true}) {
                stage::record_call("glVertexPointer", size, type, stride);
                set_pointer("glVertexPointer", state().arrays[0], 2, {GL_SHORT, GL_INT, GL_FLOAT, GL_DOUBLE}, size,
                            type, stride, pointer);
            }
        },
    .ColorPointer =
        [](int size, unsigned int type, int stride, const void* pointer) {
            if (const Call call{"glColorPointer", false, true}) {
                stage::record_call("glColorPointer", size, type, stride);
                set_pointer("glColorPointer", state().arrays[1], 3,
                            {GL_BYTE, GL_UNSIGNED_BYTE, GL_SHORT, GL_UNSIGNED_SHORT, GL_INT, GL_UNSIGNED_INT, GL_FLOAT,
                             GL_DOUBLE},
                            size, type, stride, pointer);
            }
        },
    .TexCoordPointer =
        [](int size, unsigned int type, int stride, const void* pointer) {
            if (const Call call{"glTexCoordPointer", false, true}) {
                stage::record_call("glTexCoordPointer", size, type, stride);
                set_pointer("glTexCoordPointer", state().arrays[2], 1, {GL_SHORT, GL_INT, GL_FLOAT, GL_DOUBLE}, size,
                            type, stride, pointer);
            }
        },
    .DrawArrays =
        [](unsigned int mode, int first, int count) {
            if (const Call call{"glDrawArrays"}) {
                stage::record_call("glDrawArrays", mode, first, count);
                draw_arrays(mode, first, count);
            }
        },
    .EnableClientState =
        [](unsigned int array) {
            if (const Call call{"glEnableClientState"}) {
                stage::record_call("glEnableClientState", array);
                set_client_state("glEnableClientState", array, true);
            }
        },
    .DisableClientState =
        [](unsigned int array) {
            if (const Call call{"glDisableClientState"}) {
                stage::record_call("glDisableClientState", array);
                set_client_state("glDisableClientState", array, false);
            }
        },
    .Enable =
        [](unsigned int capability) {
            if (const Call call{"glEnable"}) {
                stage::record_call("glEnable", capability);
                set_capability("glEnable", capability, true);
            }
        },
    .Disable =
        [](unsigned int capability) {
            if (const Call call{"glDisable"}) {
                stage::record_call("glDisable", capability);
                set_capability("glDisable", capability, false);
            }
        },
    .DepthMask =
        [](unsigned char flag) {
            if (const Call call{"glDepthMask"}) {
                stage::record_call("glDepthMask", flag);
                note_left(flag == 0, "the depth mask off");
            }
        },
    .Hint =
        [](unsigned int target, unsigned int mode) {
            if (const Call call{"glHint"}) {
                stage::record_call("glHint", target, mode);
                hint(target, mode);
            }
        },
    .LineWidth =
        [](float width) {
            if (const Call call{"glLineWidth"}) {
                stage::record_call("glLineWidth", width);
                set_size("glLineWidth", width);
            }
        },
    .PointSize =
        [](float size) {
            if (const Call call{"glPointSize"}) {
                stage::record_call("glPointSize", size);
                set_size("glPointSize", size);
            }
        },
    .MatrixMode =
        [](unsigned int mode) {
            if (const Call call{"glMatrixMode"}) {
                stage::record_call("glMatrixMode", mode);
                matrix_mode(mode);
            }
        },
    .LoadIdentity =
        [] {
            if (const Call call{"glLoadIdentity"}) {
                stage::record_call("glLoadIdentity");
                change_matrix();
            }
        },
    .PushMatrix =
        [] {
            if (const Call call{"glPushMatrix"}) {
                stage::record_call("glPushMatrix");
                push_matrix();
            }
        },
    .PopMatrix =
        [] {
            if (const Call call{"glPopMatrix"}) {
                stage::record_call("glPopMatrix");
                pop_matrix();
            }
        },
    .MultMatrixf =
        [](const float* m) {
            if (const Call call{"glMultMatrixf"}) {
                stage::record_call("glMultMatrixf", m[0], m[5], m[10], m[12], m[13], m[14]);
                check_numbers("glMultMatrixf", m, 16);
                change_matrix();
            }
        },
    .Translatef =
        [](float x, float y, float z) {
            if (const Call call{"glTranslatef"}) {
                stage::record_call("glTranslatef", x, y, z);
                const float numbers[] = {x, y, z};
                check_numbers("glTranslatef", numbers, 3);
                change_matrix();
            }
        },
};

}  // namespace

void watch_opengl(const ElfFile& library) {
    state().library = &library;
    stage::use_opengl(kWatched);
    watch().on_entry.push_back([](const stage::RunningCall& call) {
        ++state().entry_number;
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
