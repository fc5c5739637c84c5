#include "checks.h"

#include <array>

#include "watch.h"

namespace tovu::validate {
namespace {

using Names = std::vector<const char*>;

const Names kReadable = {"file.format"};
const Names kLoadable = {"file.exports", "file.imports"};
const Names kLoaded = {"load.init"};
const Names kRegistered = {"load.init", "register.order", "register.once", "register.values", "register.size"};
const Names kAlive = {"life.cycle"};

const Check kChecks[] = {
    {"file.format", Group::kFile, "The file is a shared library of this machine", {}, check_file_format},
    {"file.exports", Group::kFile, "It exports the eight entry points and nothing else", kReadable, check_file_exports},
    {"file.imports", Group::kFile, "Each import is a host's function or one of the libraries it needs", kReadable,
     check_file_imports},
    {"load.init", Group::kLoad, "It loads, and PLUGIN_INIT registers it and returns 0", kLoadable, check_load_init},
    {"register.order", Group::kRegister, "Name and type come first, and nothing after PLUGIN_INIT", kLoaded,
     check_register_order},
    {"register.once", Group::kRegister, "Nothing is registered twice", kLoaded, check_register_once},
    {"register.values", Group::kRegister, "Names, labels, ranges, choices and flags are possible", kLoaded,
     check_register_values},
    {"register.size", Group::kRegister, "The block holds the slots and is not enormous", kLoaded, check_register_size},
    {"life.cycle", Group::kLive, "An instance is made, runs, draws and is cleaned up", kRegistered, check_life_cycle,
     true},
    {"life.orders", Group::kLive, "Unusual orders of calls", kAlive, check_life_orders},
    {"life.garbage", Group::kLive, "What block, stack and heap held before makes no difference", kAlive,
     check_life_garbage},
    {"life.two", Group::kLive, "A second instance makes no difference to the first", kAlive, check_life_two},
    {"block.bounds", Group::kMemory, "Nothing outside of the block is read or written", kAlive, check_block_bounds},
    {"block.slots", Group::kMemory, "The parameter slots are left alone", kAlive, check_block_slots},
    {"text.bounds", Group::kMemory, "Texts are read to their NUL and answers are closed by one", kAlive,
     check_text_bounds},
    {"text.moves", Group::kMemory, "No address of a text is kept", kAlive, check_text_moves},
    {"image.moves", Group::kMemory, "Pixels are read inside their bounds, and only in the call that asked for them",
     kAlive, check_image_moves},
    {"heap.bounds", Group::kMemory, "Heap blocks are used inside their bounds and freed once", kAlive,
     check_heap_bounds},
    {"heap.leaks", Group::kMemory, "An instance gives back all that it took", kAlive, check_heap_leaks},
    {"heap.steady", Group::kMemory, "A steady frame allocates nothing", kAlive, check_heap_steady},
    {"thread.host", Group::kMemory, "The host is called from its own thread only", kAlive, check_thread_host},
    {"process.state", Group::kMemory, "Rounding, locale, signals and folder stay as they were", kAlive,
     check_process_state},
    {"events.nest", Group::kDraw, "Profiling sections nest and end", kAlive, check_by_tour},
    {"gl.pass", Group::kDraw, "Each OpenGL call is right where it is made", kAlive, check_by_tour},
    {"gl.outside", Group::kDraw, "Nothing is drawn outside of a pass", kAlive, check_by_tour},
    {"gl.arrays", Group::kDraw, "Arrays can be read for as many vertices as are drawn", kAlive, check_by_tour},
    {"gl.values", Group::kDraw, "Numbers are finite and primitives whole", kAlive, check_by_tour},
    {"gl.state", Group::kDraw, "What a pass leaves changed (information)", kAlive, check_by_tour},
    {"box.finite", Group::kDraw, "Bounding boxes are finite and not inverted", kAlive, check_by_tour},
    {"dispatch.quiet", Group::kExchange, "Unknown requests are ignored, and requests do not recurse", kAlive,
     check_dispatch_quiet},
    {"consumer.lists", Group::kExchange, "A consumer leaves the lists of a smoke alone", kAlive, check_consumer_lists},
    {"consumer.manners", Group::kExchange, "A consumer claims, lets go, detaches, and survives the end of a smoke",
     kAlive, check_consumer_manners},
    {"spawn.answers", Group::kExchange, "Spawn points are finite and inside", kAlive, check_spawn_answers},
    {"host.lies", Group::kHostile, "Missing and wrong answers of the host do no harm", kAlive, check_host_lies},
    {"fuzz.slots", Group::kHostile, "Any bits in any slot do no harm", kAlive, check_fuzz_slots},
};

}  // namespace

const char* to_string(Group group) {
    constexpr std::array kNames = {"file", "load", "register", "live", "memory", "draw", "exchange", "hostile"};
    return kNames[static_cast<size_t>(group)];
}

std::span<const Check> all_checks() {
    return kChecks;
}

void skip(const std::string& reason) {
    copy_text(watch().outcome->skip_reason, sizeof watch().outcome->skip_reason, reason);
}

}  // namespace tovu::validate
