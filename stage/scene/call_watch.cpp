#include "call_watch.h"

namespace stage {

const CallWatch* call_watch = nullptr;  // global, since services cannot receive it as an argument

void watch_calls(const CallWatch* watch) {
    call_watch = watch;
}

}  // namespace stage
