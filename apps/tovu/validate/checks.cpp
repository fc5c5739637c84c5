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
// A plug-in that fails one of these checks with a correct host would fail for the same reason with a wrong host.
const Names kKeepsToItsMemory = {"life.cycle",  "block.bounds", "text.bounds", "text.moves",
                                 "image.moves", "heap.bounds",  "thread.host"};
const Names kKeepsToFiniteNumbers = {"life.cycle",  "life.garbage", "block.bounds", "text.bounds", "text.moves",
                                     "image.moves", "heap.bounds",  "thread.host",  "gl.values",   "box.finite"};

const Check kChecks[] = {
    {"file.format", "The file is a shared library of this machine", {}, check_file_format, Group::kFile},
    {"file.exports", "It exports the eight entry points and nothing else", kReadable, check_file_exports, Group::kFile},
    {"file.imports", "Each import is a host's function or one of the libraries it needs", kReadable, check_file_imports,
     Group::kFile},
    {"load.init", "It loads, and PLUGIN_INIT registers it and returns 0", kLoadable, check_load_init, Group::kLoad},
    {"register.order", "Name and type come first, and nothing after PLUGIN_INIT", kLoaded, check_register_order,
     Group::kRegister},
    {"register.once", "Nothing is registered twice", kLoaded, check_register_once, Group::kRegister},
    {"register.values", "Names, labels, ranges, choices and flags are possible", kLoaded, check_register_values,
     Group::kRegister},
    {"register.size", "The block holds the slots and is not enormous", kLoaded, check_register_size, Group::kRegister},
    {"life.cycle", "An instance is made, runs, draws and is cleaned up", kRegistered, check_life_cycle, Group::kLive,
     true},
    {"life.orders", "Unusual orders of calls", kAlive, check_life_orders, Group::kLive},
    {"life.garbage", "What block, stack and heap held before makes no difference", kAlive, check_life_garbage,
     Group::kLive},
    {"life.two", "A second instance makes no difference to the first", kAlive, check_life_two, Group::kLive},
    {"block.bounds", "Nothing outside of the block is read or written", kAlive, check_block_bounds, Group::kMemory},
    {"block.slots", "The parameter slots are left alone", kAlive, check_block_slots, Group::kMemory},
    {"text.bounds", "Texts are read to their NUL and answers are closed by one", kAlive, check_text_bounds,
     Group::kMemory},
    {"text.moves", "No address of a text is kept", kAlive, check_text_moves, Group::kMemory},
    {"image.moves", "Pixels are read inside their bounds, and only in the call that asked for them", kAlive,
     check_image_moves, Group::kMemory},
    {"heap.bounds", "Heap blocks are used inside their bounds and freed once", kAlive, check_heap_bounds,
     Group::kMemory},
    {"heap.leaks", "An instance gives back all that it took", kAlive, check_heap_leaks, Group::kMemory},
    {"heap.steady",
     "A steady frame allocates nothing",
     {"life.cycle", "heap.leaks"},
     check_heap_steady,
     Group::kMemory},
    {"thread.host", "The host is called from its own thread only", kAlive, check_thread_host, Group::kMemory},
    {"process.state", "Rounding, locale, signals and folder stay as they were", kAlive, check_process_state,
     Group::kMemory},
    {"events.nest", "Profiling sections nest and end", kAlive, check_by_tour, Group::kDraw},
    {"gl.pass", "Each OpenGL call is right where it is made", kAlive, check_by_tour, Group::kDraw},
    {"gl.outside", "Nothing is drawn outside of a pass", kAlive, check_by_tour, Group::kDraw},
    {"gl.arrays", "Arrays can be read for as many vertices as are drawn", kAlive, check_by_tour, Group::kDraw},
    {"gl.values", "Numbers are finite and primitives whole", kAlive, check_by_tour, Group::kDraw},
    {"gl.state", "What a pass leaves changed (information)", kAlive, check_by_tour, Group::kDraw},
    {"box.finite", "Bounding boxes are finite and not inverted", kAlive, check_by_tour, Group::kDraw},
    {"dispatch.quiet", "Unknown requests are ignored, and requests do not recurse", kAlive, check_dispatch_quiet,
     Group::kExchange},
    {"consumer.lists", "A consumer leaves the lists of a smoke alone", kAlive, check_consumer_lists, Group::kExchange},
    {"consumer.manners",
     "A consumer claims, lets go, detaches, and survives the end of a smoke",
     {"life.cycle", "consumer.lists"},
     check_consumer_manners,
     Group::kExchange},
    {"spawn.answers", "Spawn points are finite and inside", kAlive, check_spawn_answers, Group::kExchange},
    {"host.lies", "Missing and wrong answers of the host do no harm", kKeepsToItsMemory, check_host_lies,
     Group::kHostile},
    {"fuzz.slots", "Any bits in any slot do no harm", kKeepsToFiniteNumbers, check_fuzz_slots, Group::kHostile},
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
