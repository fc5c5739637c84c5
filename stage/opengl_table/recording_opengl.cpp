#include "recording_opengl.h"

#include <tovu/opengl.h>

#include <cstring>

#include "stage/call_log.h"

namespace stage {
namespace {

struct ClientArray {
    bool enabled = false;
    int size = 0;
    unsigned int type = 0;
    int stride = 0;
    const void* pointer = nullptr;
};

struct Recorder {
    ClientArray vertices;
    ClientArray colors;
    ClientArray texcoords;
    std::vector<RecordedDraw> draws;
};

Recorder& recorder() {
    static Recorder the_recorder;  // global, since OpenGL functions cannot receive it as an argument
    return the_recorder;
}

void set_enabled(unsigned int array, bool enabled) {
    switch (array) {
        case GL_VERTEX_ARRAY:
            recorder().vertices.enabled = enabled;
            break;
        case GL_COLOR_ARRAY:
            recorder().colors.enabled = enabled;
            break;
        case GL_TEXTURE_COORD_ARRAY:
            recorder().texcoords.enabled = enabled;
            break;
        default:
            break;
    }
}

void point_at(ClientArray& array, int size, unsigned int type, int stride, const void* pointer) {
    array = {array.enabled, size, type, stride, pointer};
}

template <class Component>
void copy_values(const ClientArray& array, int first, int count, std::vector<float>& values) {
    const size_t size = static_cast<size_t>(array.size);
    const size_t stride = array.stride > 0 ? static_cast<size_t>(array.stride) : size * sizeof(Component);
    const auto* start = static_cast<const unsigned char*>(array.pointer) + static_cast<size_t>(first) * stride;
    for (size_t vertex = 0; vertex < static_cast<size_t>(count); ++vertex) {
        for (size_t component = 0; component < size; ++component) {
            Component value;
            std::memcpy(&value, start + vertex * stride + component * sizeof(Component), sizeof value);
            values.push_back(static_cast<float>(value));
        }
    }
}

RecordedArray read_array(const ClientArray& array, int first, int count) {
    RecordedArray read;
    if (!array.enabled || array.pointer == nullptr || array.size < 1 || first < 0 || count < 0) return read;
    read.size = array.size;
    read.type = array.type;
    read.values.reserve(static_cast<size_t>(count) * static_cast<size_t>(array.size));
    switch (array.type) {
        case GL_FLOAT:
            copy_values<float>(array, first, count, read.values);
            break;
        case GL_SHORT:
            copy_values<short>(array, first, count, read.values);
            break;
        case GL_UNSIGNED_BYTE:
            copy_values<unsigned char>(array, first, count, read.values);
            break;
        default:
            break;
    }
    return read;
}

void record_draw(unsigned int mode, int first, int count) {
    if (is_recording_calls()) recorder().draws.push_back(read_client_arrays(mode, first, count));
}

/// Marks the arguments that are not recorded (addresses) as used.
template <class... Arguments>
void leave_out(Arguments...) {}

constexpr OpenGlDispatch kPlainRecording = {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) \
    .name = [] parameters {                                    \
        leave_out arguments;                                   \
        record_call recorded;                                  \
    },
#include "opengl_functions.def"
};

/// The six functions of client arrays also store the arrays or read them.
constexpr OpenGlDispatch recording_with_arrays() {
    OpenGlDispatch dispatch = kPlainRecording;
    dispatch.VertexPointer = [](int size, unsigned int type, int stride, const void* pointer) {
        point_at(recorder().vertices, size, type, stride, pointer);
        kPlainRecording.VertexPointer(size, type, stride, pointer);
    };
    dispatch.ColorPointer = [](int size, unsigned int type, int stride, const void* pointer) {
        point_at(recorder().colors, size, type, stride, pointer);
        kPlainRecording.ColorPointer(size, type, stride, pointer);
    };
    dispatch.TexCoordPointer = [](int size, unsigned int type, int stride, const void* pointer) {
        point_at(recorder().texcoords, size, type, stride, pointer);
        kPlainRecording.TexCoordPointer(size, type, stride, pointer);
    };
    dispatch.EnableClientState = [](unsigned int array) {
        set_enabled(array, true);
        kPlainRecording.EnableClientState(array);
    };
    dispatch.DisableClientState = [](unsigned int array) {
        set_enabled(array, false);
        kPlainRecording.DisableClientState(array);
    };
    dispatch.DrawArrays = [](unsigned int mode, int first, int count) {
        record_draw(mode, first, count);
        kPlainRecording.DrawArrays(mode, first, count);
    };
    return dispatch;
}

constinit const OpenGlDispatch kRecordingOpenGl = recording_with_arrays();

}  // namespace

const OpenGlDispatch& recording_opengl() {
    return kRecordingOpenGl;
}

RecordedDraw read_client_arrays(unsigned int mode, int first, int count) {
    const Recorder& r = recorder();
    return {recorded_calls().size(),
            mode,
            first,
            count,
            read_array(r.vertices, first, count),
            read_array(r.colors, first, count),
            read_array(r.texcoords, first, count)};
}

const std::vector<RecordedDraw>& recorded_draws() {
    return recorder().draws;
}

void forget_recorded_draws() {
    recorder().draws.clear();
}

}  // namespace stage
