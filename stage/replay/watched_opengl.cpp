#include "watched_opengl.h"

#include <fmt/format.h>

#include <array>
#include <string>
#include <type_traits>

#include "fnv1a.h"
#include "stage/opengl_table/recording_opengl.h"
#include "stage/scene/call_watch.h"

namespace stage {
namespace {

template <class Argument>
CallValue value_of(Argument argument) {
    if constexpr (std::is_integral_v<Argument>)
        return static_cast<int32_t>(argument);
    else
        return argument;
}

template <class... Arguments>
void tell(const char* name, Arguments... arguments) {
    if (!call_watch || !call_watch->opengl_called) return;
    const std::array<CallValue, sizeof...(arguments)> values = {value_of(arguments)...};
    call_watch->opengl_called(name, values);
}

std::string array_text(const char* name, const RecordedArray& array) {
    Fnv1a digest;
    for (const float value : array.values) digest.add(value);
    return fmt::format("{} {} x {:#x} {:016x}", name, array.size, array.type, digest.value);
}

void tell_of_arrays(unsigned int mode, int first, int count) {
    const RecordedDraw draw = read_client_arrays(mode, first, count);
    std::string texts;
    for (const auto& [name, array] : {std::pair("vertices", &draw.vertices), std::pair("colours", &draw.colors),
                                      std::pair("texcoords", &draw.texcoords)})
        if (array->size > 0) texts += (texts.empty() ? "" : ", ") + array_text(name, *array);
    tell("glDrawArrays", mode, first, count, texts.c_str());
}

/// Each call first goes to the recording table, which stores the client arrays.
constexpr OpenGlDispatch watched_table() {
    OpenGlDispatch table = {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) \
    .name = [] parameters {                                    \
        recording_opengl().name arguments;                     \
        tell recorded;                                         \
    },
#include "stage/opengl_table/opengl_functions.def"
    };
    table.DrawArrays = tell_of_arrays;
    return table;
}

constinit const OpenGlDispatch kWatchedOpenGl = watched_table();

}  // namespace

const OpenGlDispatch& watched_opengl() {
    return kWatchedOpenGl;
}

}  // namespace stage
