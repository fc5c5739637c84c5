#include "real_opengl.h"

#include <epoxy/gl.h>
#include <fmt/format.h>

#include <type_traits>
#include <utility>

#include "errors.h"
#include "stage/call_log.h"
#include "stage/plugins/random_stream.h"

namespace stage {
namespace {

// A driver may call rand, which must not consume random numbers of the calling instance.
constinit const OpenGlDispatch kRealOpenGl = {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) \
    .name = [] parameters {                                    \
        const DrawFrom outside(nullptr);                       \
        gl##name arguments;                                    \
    },
#include "stage/opengl_table/opengl_functions.def"
};

constexpr size_t kMaxComplaints = 100;  // limits the memory when each particle causes a fault

struct Checker {
    bool between_begin_and_end = false;
    std::vector<std::string> complaints;
    int64_t dropped = 0;
};

Checker& checker() {
    static Checker the_checker;  // global, since OpenGL functions cannot receive it as an argument
    return the_checker;
}

template <class... Arguments>
std::string call_text(const char* name, Arguments... arguments) {
    Call call{name, {}};
    (call.arguments.emplace_back(static_cast<double>(arguments)), ...);
    return to_string(call);
}

/// Checks for errors after a call. text: returns the call as text; called only after an error.
template <class Text>
void check_call(const Text& text) {
    // Between glBegin and glEnd glGetError itself is an error. Errors of that time are reported after glEnd.
    if (checker().between_begin_and_end) return;
    for (const std::string& error : take_opengl_errors())
        if (checker().complaints.size() < kMaxComplaints)
            checker().complaints.push_back(fmt::format("{}: {}", text(), error));
        else
            ++checker().dropped;
}

template <class Function>
void note_begin_and_end(Function OpenGlDispatch::*called) {
    if constexpr (std::is_same_v<Function, decltype(OpenGlDispatch::Begin)>)
        if (called == &OpenGlDispatch::Begin) checker().between_begin_and_end = true;
    if constexpr (std::is_same_v<Function, decltype(OpenGlDispatch::End)>)
        if (called == &OpenGlDispatch::End) checker().between_begin_and_end = false;
}

constinit const OpenGlDispatch kCheckingOpenGl = {
#define OPENGL_FUNCTION(name, parameters, arguments, recorded) \
    .name = [] parameters {                                    \
        const DrawFrom outside(nullptr);                       \
        gl##name arguments;                                    \
        note_begin_and_end(&OpenGlDispatch::name);             \
        check_call([&] { return call_text recorded; });        \
    },
#include "stage/opengl_table/opengl_functions.def"
};

}  // namespace

const OpenGlDispatch& real_opengl() {
    return kRealOpenGl;
}

const OpenGlDispatch& checking_opengl() {
    checker().between_begin_and_end = false;
    return kCheckingOpenGl;
}

std::vector<std::string> take_opengl_complaints() {
    if (const int64_t dropped = std::exchange(checker().dropped, 0); dropped > 0)
        checker().complaints.push_back(fmt::format("{} more faulty OpenGL calls", dropped));
    return std::exchange(checker().complaints, {});
}

}  // namespace stage
