// Checks of group live: the life of an instance, alone and with a second one.
#include <fmt/format.h>

#include <algorithm>
#include <span>

#include "checks.h"
#include "heap_watch.h"
#include "rig.h"
#include "stage/plugins/frames.h"
#include "trace.h"
#include "watch.h"

namespace tovu::validate {
namespace {

void clean_up(Rig& rig, int32_t container) {
    stage::remove_geometry(*rig.stage, container);
}

void notify_all(Rig& rig) {
    for (const stage::ParameterInfo& parameter : plugin_of(rig).parameters)
        stage::notify_changed(*rig.stage, rig.carrier, parameter.index);
}

struct Order {
    const char* words;
    void (*run)(Rig& rig);
};

const Order kOrders[] = {
    {"cleaned up at once", [](Rig& rig) { clean_up(rig, rig.carrier); }},
    {"drawn before its first frame",
     [](Rig& rig) {
         draw(rig, rig.carrier);
         draw(rig, rig.carrier, true);
         run_frame(rig);
         draw(rig, rig.carrier);
     }},
    {"told of changes before its first frame", [](Rig& rig) { notify_all(rig); }},
    {"its buttons pressed before its first frame", [](Rig& rig) { press_all_buttons(rig, rig.carrier); }},
    {"never drawn",
     [](Rig& rig) {
         for (int i = 0; i < 5; ++i) run_frame(rig);
     }},
    {"a frame run three times",
     [](Rig& rig) {
         for (int i = 0; i < 3; ++i) {
             run_frame(rig);
             stage::new_frame(*rig.stage);
             stage::new_frame(*rig.stage);
             draw(rig, rig.carrier);
         }
     }},
    {"drawn many times in a frame",
     [](Rig& rig) {
         run_frame(rig);
         for (int i = 0; i < 20; ++i) draw(rig, rig.carrier, i % 2 == 1, 0.05f * static_cast<float>(i));
     }},
    {"frames dropped",
     [](Rig& rig) {
         for (const int retraces : {1, 100, 1000000, 1}) {
             run_frame(rig, retraces);
             draw(rig, rig.carrier);
         }
     }},
    {"the retrace counter going back",
     [](Rig& rig) {
         run_frame(rig, 1000);
         rig.stage->clock.retrace_counter = 1;
         run_frame(rig);
         draw(rig, rig.carrier);
     }},
    {"a recording that begins, goes back in time and ends",
     [](Rig& rig) {
         run_frame(rig);
         rig.stage->clock.post_recording = true;
         for (int i = 0; i < 3; ++i) run_frame(rig);
         rig.stage->clock.post_time_seconds = 0;
         run_frame(rig);
         draw(rig, rig.carrier);
         rig.stage->clock.post_recording = false;
         run_frame(rig);
         draw(rig, rig.carrier);
     }},
    {"made again after a clean-up",
     [](Rig& rig) {
         run_frame(rig);
         clean_up(rig, rig.carrier);
         add_instance(rig, rig.carrier, values_to_try(rig, 0));
         run_frame(rig);
         draw(rig, rig.carrier);
     }},
    {"a button pressed that it has not",
     [](Rig& rig) {
         const auto& buttons = plugin_of(rig).buttons;
         for (const int32_t action : {0, -1, 4711, INT32_MAX, INT32_MIN})
             if (std::none_of(buttons.begin(), buttons.end(), [&](const auto& b) { return b.action == action; }))
                 stage::execute_action(*rig.stage, rig.carrier, action);
     }},
    {"a container of no size",
     [](Rig& rig) {
         stage::find_container(*rig.stage, rig.carrier)->placement.scale = {0, 0, 0};
         for (int i = 0; i < 3; ++i) run_frame(rig);
         draw(rig, rig.carrier);
     }},
};

void exercise_first(Rig& rig) {
    for (int setting = 0; setting < 5; ++setting) {
        if (setting > 0) set_values(rig, rig.carrier, values_to_try(rig, setting - 1), true);
        for (int frame = 0; frame < 4; ++frame) {
            run_frame(rig);
            draw(rig, rig.carrier);
            send_requests(rig);
            if (stage::instance_of(*rig.stage, rig.other_carrier)) draw(rig, rig.other_carrier);
        }
        press_all_buttons(rig, rig.carrier);
    }
}

/// The calls of an instance, with or without a second instance in the scene. second_is_first: the second instance is
/// older and is simulated first in each frame.
std::vector<TraceLine> trace_beside(const Subject& subject, bool is_second_there, bool second_is_first) {
    std::unique_ptr<Rig> rig;
    const auto add_second = [&] {
        // Without a second instance a mesh geometry takes its handle, so that later handles are equal.
        if (!is_second_there) return (void)stage::set_mesh_geometry(*rig->stage, rig->other_carrier, {});
        const std::mt19937 before = rig->random;
        add_instance(*rig, rig->other_carrier);
        set_values(*rig, rig->other_carrier, values_to_try(*rig, 1), true);
        rig->random = before;
    };
    const auto scenario = [&] {
        rig = make_rig(subject);
        rig->keeps_to_itself = true;
        fill_new_blocks(0);  // unset fields are findings of life.garbage
        if (second_is_first) {
            std::swap(rig->carrier, rig->other_carrier);
            add_second();
            for (int i = 0; i < 2; ++i) run_frame(*rig);  // the older instance alone
        }
        add_instance(*rig, rig->carrier);
        if (!second_is_first) add_second();
        exercise_first(*rig);
        clean_up(*rig, rig->other_carrier);
        run_frame(*rig);
        draw(*rig, rig->carrier);
        rig.reset();
    };
    return trace_of(scenario, [&] { return rig ? rig->carrier : -1; });
}

/// Runs the second instance after the first one was cleaned up.
void clean_up_first(const Subject& subject) {
    const auto rig = make_rig(subject);
    for (const int32_t container : {rig->carrier, rig->other_carrier})
        add_instance(*rig, container, values_to_try(*rig, 0));
    run_frame(*rig);
    watch().during = "after another instance was cleaned up";
    clean_up(*rig, rig->carrier);
    run_frame(*rig);
    draw(*rig, rig->other_carrier);
    watch().during.clear();
}

struct Garbage {
    uint8_t block;
    uint32_t stack;
    const char* words;
};

constexpr Garbage kGarbage[] = {{0x00, 0, "zeros"},
                                {0xCD, 0xCDCDCDCD, "0xCD bytes"},
                                {0xFF, 0xFFFFFFFF, "0xFF bytes"},
                                {0x7F, 0x7FFD7FFD, "numbers that are none"}};

std::vector<TraceLine> trace_with(const Subject& subject, const Garbage& garbage) {
    std::unique_ptr<Rig> rig;
    const auto scenario = [&] {
        stage::MemoryOptions memory = wide_memory();
        memory.fill = garbage.block;
        rig = make_rig(subject, memory);
        poison_stack(garbage.stack);
        fill_new_blocks(garbage.block);
        add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
        draw(*rig, rig->carrier);  // before its first frame
        exercise_first(*rig);
        rig.reset();
    };
    return trace_of(scenario, [&] { return rig ? rig->carrier : -1; });
}

}  // namespace

void check_life_cycle(const Subject& subject) {
    const auto rig = make_rig(subject);
    tour(*rig);
}

void check_life_orders(const Subject& subject) {
    const auto rig = make_rig(subject);
    for (const Order& order : kOrders) {
        watch().during = order.words;
        if (order.words != kOrders[0].words) stage::find_container(*rig->stage, rig->carrier)->placement = {};
        add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
        order.run(*rig);
        clean_up(*rig, rig->carrier);
        clean_up(*rig, rig->other_carrier);
        rig->stage->clock.post_recording = false;
    }
}

void check_life_garbage(const Subject& subject) {
    const auto with_zeros = [&subject] { return trace_with(subject, kGarbage[0]); };
    const std::vector<TraceLine> once = with_zeros();
    for (const Garbage& garbage : std::span(kGarbage).subspan(1))
        if (!expect_equal("life.garbage", once, trace_with(subject, garbage), with_zeros,
                          fmt::format("with {} in new memory", garbage.words),
                          "set every field in PLUGIN_INIT_FUNCTION, and every local before it is used"))
            return;
}

void check_life_two(const Subject& subject) {
    for (const bool second_is_first : {false, true}) {
        const auto alone = [&] { return trace_beside(subject, false, second_is_first); };
        if (!expect_equal("life.two", alone(), trace_beside(subject, true, second_is_first), alone,
                          "with a second instance in the scene", "keep in the block what belongs to an instance"))
            break;
    }
    if (watch().outcome->finding_count == 0) clean_up_first(subject);
}

}  // namespace tovu::validate
