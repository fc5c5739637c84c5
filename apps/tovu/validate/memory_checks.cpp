// Checks of group memory: block, slots, texts, pixels and heap.
#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <deque>

#include "checks.h"
#include "heap_watch.h"
#include "rig.h"
#include "stage/plugins/frames.h"
#include "watch.h"

namespace tovu::validate {
namespace {

using stage::Instance;
using stage::ParameterInfo;
using stage::ParameterKind;
using stage::RunningCall;

std::vector<uint32_t> slots_of(const Instance& instance) {
    std::vector<uint32_t> slots(stage::plugin(instance.plugin).parameters.size());
    if (!slots.empty()) std::memcpy(slots.data(), instance.block, 4 * slots.size());
    return slots;
}

bool has_texts(const Rig& rig) {
    const auto& parameters = plugin_of(rig).parameters;
    return std::any_of(parameters.begin(), parameters.end(),
                       [](const ParameterInfo& parameter) { return parameter.max_length > 0; });
}

std::string longest_text(const ParameterInfo& parameter) {
    return std::string(static_cast<size_t>(parameter.max_length), 'x');
}

/// Tries each text of the longest length, empty, and with multi-byte characters.
void try_texts(Rig& rig, bool with_longest) {
    int frame = 0;
    for (const ParameterInfo& parameter : plugin_of(rig).parameters) {
        if (parameter.max_length < 1) continue;
        std::vector<std::string> texts = {"", "a", "Gr\u00FC\u00DFe \u4E16\u754C", "outline", "picture"};
        if (with_longest) texts.push_back(longest_text(parameter));
        texts.push_back(std::get<std::string>(parameter.initial));
        for (std::string text : texts) {
            if (text.size() > static_cast<size_t>(parameter.max_length))
                text.resize(static_cast<size_t>(parameter.max_length));
            set_values(rig, rig.carrier, {{parameter.name, text}}, ++frame % 2 == 0);
            run_frame(rig);
            draw(rig, rig.carrier);
        }
        press_all_buttons(rig, rig.carrier);
    }
}

using Texts = std::vector<std::string>;

/// Copies the texts before a call, to find out what the call changes.
Texts texts_of(const Instance& instance) {
    Texts texts;
    for (const ParameterInfo& parameter : stage::plugin(instance.plugin).parameters) {
        const char* buffer = instance.text_buffers[static_cast<size_t>(parameter.index)];
        texts.push_back(buffer ? std::string(buffer, strnlen(buffer, static_cast<size_t>(parameter.max_length) + 1))
                               : "");
    }
    return texts;
}

void compare_texts(const Instance& instance, const Texts& before) {
    for (const ParameterInfo& parameter : stage::plugin(instance.plugin).parameters) {
        const auto index = static_cast<size_t>(parameter.index);
        const char* buffer = instance.text_buffers[index];
        if (!buffer) continue;
        const size_t room = instance.fenced_texts[index].size();
        const size_t length = strnlen(buffer, room);
        if (before[index] == std::string_view(buffer, length)) continue;
        if (parameter.kind != ParameterKind::kString)
            fail("text.bounds", fmt::format("wrote into the text of '{}', a name", parameter.name),
                 "write into a String only");
        else if (length >= static_cast<size_t>(parameter.max_length))
            fail("text.bounds",
                 fmt::format("left the text of '{}' without a NUL in its {} bytes", parameter.name,
                             parameter.max_length),
                 "write less than the registered longest length, and a NUL");
    }
}

void watch_texts(std::deque<Texts>& before) {
    watch().on_entry.push_back([&](const RunningCall& call) { before.push_back(texts_of(*call.instance)); });
    watch().on_return.push_back([&](const RunningCall& call) {
        compare_texts(*call.instance, before.back());
        before.pop_back();
    });
}

/// A copy of an image's pixels for one call.
struct LentPixels {
    stage::FencedMemory memory;
    std::vector<uint8_t> pixels;  // original content
    std::string image;
};

/// Gives the plug-in copies of pixels that become unreadable when the call returns or sends a request.
struct MovingPixels {
    std::deque<LentPixels> lent;
    size_t first_open = 0;  // index of the first readable copy in `lent`
    stage::FenceSide side = stage::FenceSide::kBehind;
    int64_t asked = 0;
};

void lend_pixels(MovingPixels& moving, int32_t handle, uint8_t** pixels) {
    const stage::Image* image = stage::find_image(*watch().stage, handle);
    if (!image || image->pixels.empty()) return _api__get_image_data(handle, pixels);
    ++moving.asked;
    LentPixels& copy = moving.lent.emplace_back(
        LentPixels{stage::FencedMemory(image->pixels.size(), {moving.side, 1, 0, false}), image->pixels, image->name});
    std::memcpy(copy.memory.data(), image->pixels.data(), image->pixels.size());
    watch().regions.push_back(
        {&copy.memory, "image.moves", fmt::format("the pixels of the image '{}'", image->name),
         " after the call that asked for them, or after a request that it sent since",
         "width x height x bytes of a pixel are there, until the entry point returns or sends a request"});
    *pixels = reinterpret_cast<uint8_t*>(copy.memory.data());
}

void take_pixels_back(MovingPixels& moving) {
    for (; moving.first_open < moving.lent.size(); ++moving.first_open) {
        LentPixels& back = moving.lent[moving.first_open];
        if (std::memcmp(back.memory.data(), back.pixels.data(), back.pixels.size()) != 0)
            fail("image.moves", fmt::format("wrote into the pixels of the image '{}'", back.image),
                 "the host owns the pixels: read them only");
        back.memory.forbid();
    }
    constexpr size_t kMostKept = 256;
    while (moving.lent.size() > kMostKept) {
        const stage::FencedMemory* oldest = &moving.lent.front().memory;
        std::erase_if(watch().regions, [oldest](const FencedRegion& region) { return region.memory == oldest; });
        moving.lent.pop_front();
        --moving.first_open;
    }
}

void tour_with_moving_pixels(const Subject& subject, stage::FenceSide side, int64_t& asked) {
    MovingPixels moving;
    moving.side = side;
    const auto rig = make_rig(subject);
    rig->stage->overrides.get_image_data = [&moving](int32_t image, uint8_t** pixels) {
        lend_pixels(moving, image, pixels);
    };
    rig->stage->overrides.geom_dispatcher = [&moving, next = rig->stage->overrides.geom_dispatcher](auto... request) {
        take_pixels_back(moving);
        return next(request...);
    };
    watch().on_return.push_back([&moving](const RunningCall&) {
        if (watch().stage->running.size() == 1) take_pixels_back(moving);
    });
    add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
    for (int setting = 0; setting < 8; ++setting) {
        set_values(*rig, rig->carrier, values_to_try(*rig, setting), setting % 2 == 1);
        for (const ParameterInfo& parameter : plugin_of(*rig).parameters)
            if (parameter.kind == ParameterKind::kImage)
                set_values(*rig, rig->carrier, {{parameter.name, setting % 3 == 2 ? "mask" : "picture"}},
                           setting % 2 == 0);
        for (int frame = 0; frame < 4; ++frame) {
            // Changes pixels, size and format of the same image.
            const int32_t picture = stage::find_image_by_name(*rig->stage, "picture");
            const int32_t wide = 3 + (setting * 4 + frame) % 5;
            if (frame == 2)
                stage::replace_image(*rig->stage, picture, wide, 2, 0x1909,
                                     std::vector<uint8_t>(static_cast<size_t>(2 * wide), 200));
            run_frame(*rig);
            draw(*rig, rig->carrier);
        }
    }
    stage::remove_geometry(*rig->stage, rig->carrier);
    asked += moving.asked;
}

/// A text such as ", allocated in step" for the innermost caller in the plug-in; empty if there is none.
std::string allocated_by(const Subject& subject, const HeapBlock& block) {
    const SharedOutcome& outcome = *watch().outcome;
    for (uint32_t i = 0; i < block.caller_count; ++i) {
        if (block.callers[i] < outcome.library_start || block.callers[i] >= outcome.library_end) continue;
        const uint64_t offset = block.callers[i] - outcome.library_start - 1;
        const ElfSymbol* symbol = symbol_at(subject.file, offset);
        return symbol ? fmt::format(", allocated in {}", plain_name(symbol->name))
                      : fmt::format(", allocated at +{:#x}", offset);
    }
    return "";
}

void report_heap(const Subject& subject) {
    for (const HeapFinding& finding : take_heap_findings()) {
        const char* words[] = {"wrote behind the end of a block of {} bytes{}",
                               "wrote into a block of {} bytes after it was freed{}",
                               "freed a block of {} bytes twice{}"};
        const char* rights[] = {"stay inside the block", "use a block until it is freed only", "free a block once"};
        const auto kind = static_cast<size_t>(finding.fault);
        fail("heap.bounds",
             fmt::format(fmt::runtime(words[kind]), finding.block.bytes, allocated_by(subject, finding.block)),
             rights[kind]);
    }
}

bool skip_without_heap_watch() {
    if (heap_can_be_watched()) return false;
    skip("this build of the host has a heap of its own");
    return true;
}

void live_once(Rig& rig) {
    rig.random.seed(rig.subject->seed);
    tour(rig);
}

}  // namespace

void check_block_bounds(const Subject& subject) {
    const auto run = [&subject](const stage::MemoryOptions& memory) {
        const auto rig = make_rig(subject, memory);
        tour(*rig);
    };
    run(wide_memory());
    // Two tours, since a fence that detects reads can lie on one side of the block only.
    for (const stage::FenceSide side : {stage::FenceSide::kBehind, stage::FenceSide::kBefore}) {
        stage::MemoryOptions memory;
        memory.fenced = true;
        memory.side = side;
        run(memory);
    }
}

void check_block_slots(const Subject& subject) {
    const auto rig = make_rig(subject);
    if (plugin_of(*rig).parameters.empty()) return skip("it has no parameters");
    std::deque<std::vector<uint32_t>> before;
    watch().on_entry.push_back([&](const RunningCall& call) { before.push_back(slots_of(*call.instance)); });
    watch().on_return.push_back([&](const RunningCall& call) {
        const std::vector<uint32_t> now = slots_of(*call.instance);
        for (size_t i = 0; i < now.size(); ++i)
            if (now[i] != before.back()[i])
                fail("block.slots",
                     fmt::format("wrote {:#x} into slot {}, '{}'", now[i], i, plugin_of(*rig).parameters[i].name),
                     "slots are the host's: keep values of your own behind them");
        before.pop_back();
    });
    tour(*rig);
}

void check_text_bounds(const Subject& subject) {
    stage::MemoryOptions memory;
    memory.fenced = true;
    memory.texts_move = true;
    const auto rig = make_rig(subject, memory);
    if (!has_texts(*rig)) return skip("it has no texts");
    std::deque<Texts> before;
    watch_texts(before);
    add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
    try_texts(*rig, true);
    stage::remove_geometry(*rig->stage, rig->carrier);
}

void check_text_moves(const Subject& subject) {
    stage::MemoryOptions memory = wide_memory();
    memory.texts_move = true;
    const auto rig = make_rig(subject, memory);
    if (!has_texts(*rig)) return skip("it has no texts");
    add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
    run_frame(*rig);
    draw(*rig, rig->carrier);
    try_texts(*rig, false);
    for (int setting = 1; setting < 8; ++setting) {
        set_values(*rig, rig->carrier, values_to_try(*rig, setting), setting % 2 == 0);
        run_frame(*rig);
        draw(*rig, rig->carrier);
        press_all_buttons(*rig, rig->carrier);
    }
    stage::remove_geometry(*rig->stage, rig->carrier);
}

void check_image_moves(const Subject& subject) {
    int64_t asked = 0;
    for (const stage::FenceSide side : {stage::FenceSide::kBehind, stage::FenceSide::kBefore})
        tour_with_moving_pixels(subject, side, asked);
    if (asked == 0) skip("it asks for no pixels");
}

void check_heap_bounds(const Subject& subject) {
    if (skip_without_heap_watch()) return;
    watch_heap({true, true});
    const auto rig = make_rig(subject);
    watch().on_return.push_back([&](const RunningCall&) { report_heap(subject); });
    tour(*rig);
}

void check_heap_leaks(const Subject& subject) {
    if (skip_without_heap_watch()) return;
    const auto rig = make_rig(subject);
    watch_heap({true, true});
    HeapTotals after[4];
    for (uint32_t life = 1; life <= 3; ++life) {
        set_heap_generation(life);
        live_once(*rig);
        after[life] = heap_totals();
    }
    const int64_t blocks = after[3].live_blocks - after[2].live_blocks;
    const int64_t bytes = after[3].live_bytes - after[2].live_bytes;
    if (blocks <= 0 && bytes <= 0) return;
    const std::vector<HeapBlock> left = live_blocks(3);
    const std::string where = left.empty() ? "" : allocated_by(subject, left.front());
    fail("heap.leaks",
         fmt::format("an instance's third life left {} block{} more than its second, {} bytes{}", blocks,
                     blocks == 1 ? "" : "s", bytes, where),
         "free in PLUGIN_CLEANUP_FUNCTION all that the instance owns");
}

void check_heap_steady(const Subject& subject) {
    if (skip_without_heap_watch()) return;
    const auto rig = make_rig(subject);
    watch_heap({true, true});
    add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
    const auto run = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            run_frame(*rig);
            draw(*rig, rig->carrier);
        }
    };
    run(60);
    const int64_t before = heap_totals().allocations;
    constexpr int kFrames = 20;
    run(kFrames);
    const int64_t count = heap_totals().allocations - before;
    if (count >= kFrames)
        found("heap.steady", Weight::kWarning,
              fmt::format("{} allocations in {} frames without a change{}", count, kFrames,
                          allocated_by(subject, last_allocation())),
              "keep memory with the instance and use it again");
    stage::remove_geometry(*rig->stage, rig->carrier);
}

}  // namespace tovu::validate
