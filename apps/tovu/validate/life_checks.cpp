// Instances: their life, alone and beside another one.
#include <fmt/format.h>

#include <array>
#include <cstring>
#include <functional>

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
    {"two instances, the first one cleaned up first",
     [](Rig& rig) {
         add_instance(rig, rig.other_carrier, values_to_try(rig, 0));
         run_frame(rig);
         draw(rig, rig.carrier);
         draw(rig, rig.other_carrier);
         clean_up(rig, rig.carrier);
         run_frame(rig);
         draw(rig, rig.other_carrier);
         clean_up(rig, rig.other_carrier);
     }},
    {"two instances, the second one cleaned up first",
     [](Rig& rig) {
         add_instance(rig, rig.other_carrier, values_to_try(rig, 0));
         run_frame(rig);
         clean_up(rig, rig.other_carrier);
         run_frame(rig);
         draw(rig, rig.carrier);
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
            if (stage::instance_of(*rig.stage, rig.other_carrier)) draw(rig, rig.other_carrier);
        }
        press_all_buttons(rig, rig.carrier);
    }
}

/// The calls of the instance in "subject", with a second one in "other" or without.
std::vector<TraceLine> trace_beside(const Subject& subject, bool is_second_there, bool second_is_first) {
    std::unique_ptr<Rig> rig;
    const auto scenario = [&] {
        rig = make_rig(subject);
        rig->keeps_to_itself = true;
        const auto add_other = [&] {
            // Without a second one there is a geometry in its place, so that handles are the same.
            if (is_second_there)
                add_instance(*rig, rig->other_carrier);
            else
                stage::set_mesh_geometry(*rig->stage, rig->other_carrier, {});
            if (!is_second_there) return;
            std::mt19937 before = rig->random;
            set_values(*rig, rig->other_carrier, values_to_try(*rig, 1), true);
            rig->random = before;
        };
        if (second_is_first) {
            add_other();
            for (int i = 0; i < 2; ++i) run_frame(*rig);  // alone at first
        }
        add_instance(*rig, rig->carrier);
        if (!second_is_first) add_other();
        exercise_first(*rig);
        stage::remove_geometry(*rig->stage, second_is_first ? rig->other_carrier : rig->carrier);
        if (second_is_first) {
            run_frame(*rig);
            draw(*rig, rig->carrier);
            stage::remove_geometry(*rig->stage, rig->carrier);
        }
        rig.reset();
    };
    return trace_of(scenario, [&] { return rig ? rig->carrier : -1; });
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
        watch().poison_stack = true;
        watch().poison = garbage.stack;
        fill_new_blocks(garbage.block);
        add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
        draw(*rig, rig->carrier);  // before its first frame
        exercise_first(*rig);
        rig.reset();
    };
    return trace_of(scenario, [&] { return rig ? rig->carrier : -1; });
}

bool expect_equal(const char* check, const std::vector<TraceLine>& one, const std::vector<TraceLine>& other,
                  const std::string& when, const std::string& right) {
    const Difference difference = first_difference(one, other);
    if (difference.message.empty()) return true;
    copy_text(watch().outcome->running, sizeof watch().outcome->running, difference.where);
    fail(check, fmt::format("{}: {}", when, difference.message), right);
    watch().outcome->running[0] = '\0';
    return false;
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
    const std::vector<TraceLine> once = trace_with(subject, kGarbage[0]);
    if (!first_difference(once, trace_with(subject, kGarbage[0])).message.empty())
        return found("life.garbage", Weight::kNote, "two equal runs differ, so that runs are not compared", "");
    for (const Garbage& garbage : kGarbage)
        if (garbage.words != kGarbage[0].words)
            if (!expect_equal("life.garbage", once, trace_with(subject, garbage),
                              fmt::format("with {} in new memory", garbage.words),
                              "set every field in PLUGIN_INIT_FUNCTION, and every local before it is used"))
                return;
}

void check_life_two(const Subject& subject) {
    for (const bool second_is_first : {false, true}) {
        const std::vector<TraceLine> alone = trace_beside(subject, false, second_is_first);
        if (!first_difference(alone, trace_beside(subject, false, second_is_first)).message.empty())
            return found("life.two", Weight::kNote, "two equal runs differ, so that runs are not compared", "");
        if (!expect_equal("life.two", alone, trace_beside(subject, true, second_is_first),
                          "with a second instance in the scene", "keep in the block what belongs to an instance"))
            return;
    }
}

}  // namespace tovu::validate
