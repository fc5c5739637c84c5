// Checks of group exchange: unknown requests, and the requests between smokes, consumers and spawn sources.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>

#include <tovu/exchange.h>
#include <tovu/spawn_requests.h>
#include "checks.h"
#include "rig.h"
#include "watch.h"

namespace tovu::validate {
namespace {

constexpr unsigned char kUntouched = 0x5A;

/// A reply slot followed by spare bytes, all filled with a pattern.
struct Reply {
    alignas(8) std::array<unsigned char, 64> bytes;
    Reply() { bytes.fill(kUntouched); }
    /// Number of bytes up to the last one that differs from the pattern.
    size_t written() const {
        size_t count = bytes.size();
        while (count > 0 && bytes[count - 1] == kUntouched) --count;
        return count;
    }
};

std::string code_text(int32_t request) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char character = static_cast<char>(request >> shift & 0xFF);
        text += character >= 32 && character < 127 ? character : '.';
    }
    return fmt::format("'{}' ({:#010x})", text, static_cast<uint32_t>(request));
}

std::vector<int32_t> unknown_requests(Rig& rig) {
    std::vector<int32_t> requests = {0,          -1,         1,          2,          3,          4,
                                     0x31444152, 0x4E575053, 0x50574E45, 0x72616431, 0x52414433, 0x52414430,
                                     0x5350574F, 0x4953494F, 0x00005241, INT32_MIN,  INT32_MAX};
    for (int i = 0; i < 40; ++i) requests.push_back(static_cast<int32_t>(rig.random()));
    std::erase_if(requests, [](int32_t request) {
        return request == TOVU_REQUEST_ATTACH || request == TOVU_REQUEST_DETACH ||
               request == TOVU_REQUEST_SUPPLIES_SPAWN_POINTS || request == TOVU_REQUEST_NEW_SPAWN_POINT ||
               request == TOVU_REQUEST_IS_INSIDE;
    });
    return requests;
}

void send_unknown(Rig& rig, void* data) {
    for (const int32_t request : unknown_requests(rig)) {
        Reply reply;
        stage::dispatch(*rig.stage, rig.carrier, request, data, reply.bytes.data());
        copy_text(watch().outcome->running, sizeof watch().outcome->running, "PLUGIN_DISPATCHER_CALLBACK");
        if (reply.written() > 0)
            fail("dispatch.quiet", fmt::format("answered the unknown request {}", code_text(request)),
                 "leave the reply of unknown requests alone");
        watch().outcome->running[0] = '\0';
    }
}

template <class Value>
bool read_safely(const void* address, Value& value) {
    constexpr size_t kBytes = sizeof(Value);  // NOLINT(bugprone-sizeof-expression): may be a pointer
    if (readable_bytes(address, kBytes) < kBytes) return false;
    std::memcpy(&value, address, kBytes);
    return true;
}

/// The fault of the list at the address of a head; empty if it is intact.
std::string wrong_list(Particle* const* head_address) {
    Particle* particle = nullptr;
    if (!head_address || !read_safely(head_address, particle)) return "gives an address of a head that cannot be read";
    const Particle* before = nullptr;
    for (int count = 0; particle; ++count) {
        Particle copy;
        if (!read_safely(particle, copy)) return "lists a particle that cannot be read";
        if (copy.prev != before) return "lists particles whose `prev` is not the one before";
        if (count > 1000000) return "lists particles without an end";
        before = particle;
        particle = copy.next;
    }
    return "";
}

/// Attaches to the plug-in as a consumer does. True if the plug-in is a smoke.
bool attach_to_subject(Rig& rig) {
    ParticleAttachRequest request{1000, 100, 0};
    Reply reply;
    stage::dispatch(*rig.stage, rig.carrier, TOVU_REQUEST_ATTACH, &request, reply.bytes.data());
    if (reply.written() == 0) return false;
    const std::string running = "PLUGIN_DISPATCHER_CALLBACK";
    copy_text(watch().outcome->running, sizeof watch().outcome->running, running);
    const std::string right = "ignore 'RAD1' unless the plug-in is a smoke";
    void* address = nullptr;
    std::memcpy(&address, reply.bytes.data(), sizeof address);
    ParticleExchangeBlock block;
    std::string wrong;
    if (reply.written() > sizeof(void*))
        wrong = fmt::format("writes {} bytes into the reply slot", reply.written());
    else if (!address || !read_safely(address, block))
        wrong = "answers with an address that cannot be read";
    else if (wrong = wrong_list(block.active_head); wrong.empty())
        wrong = wrong_list(block.inactive_head);
    if (!wrong.empty()) fail("dispatch.quiet", "'RAD1': " + wrong, right);
    watch().outcome->running[0] = '\0';
    return wrong.empty();
}

void detach_from_subject(Rig& rig) {
    Reply reply;
    stage::dispatch(*rig.stage, rig.carrier, TOVU_REQUEST_DETACH, nullptr, reply.bytes.data());
    void* address = nullptr;
    std::memcpy(&address, reply.bytes.data(), sizeof address);
    if (address) fail("dispatch.quiet", "'RAD2' left something else than null in the reply slot", "store null");
}

/// Sets each container parameter to the instance's own container, then to that of a second instance, and back.
void try_circular_names(Rig& rig) {
    const size_t count = std::max<size_t>(container_parameters(rig).size(), 1);
    for (size_t position = 0; position < count; ++position)
        for (const bool itself : {true, false}) {
            watch().during = itself ? "with its own container as parameter" : "with two instances that name each other";
            add_instance(rig, rig.carrier, values_with_container(rig, position, itself ? "subject" : "other"));
            if (!itself) add_instance(rig, rig.other_carrier, values_with_container(rig, position, "subject"));
            for (int frame = 0; frame < 3; ++frame) {
                run_frame(rig);
                send_unknown(rig, nullptr);
                for (const int32_t request : {TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, TOVU_REQUEST_NEW_SPAWN_POINT}) {
                    Reply reply;
                    float point[3] = {};
                    stage::dispatch(*rig.stage, rig.carrier, request, point, reply.bytes.data());
                }
            }
            stage::remove_geometry(*rig.stage, rig.carrier);
            stage::remove_geometry(*rig.stage, rig.other_carrier);
        }
    watch().during.clear();
}

constexpr int kFramesUntilAttached = 120;

/// Parameter values that name the smoke: one set for each container parameter or, without one, for each text.
std::vector<stage::ParameterValues> ways_to_name_the_smoke(const Rig& rig) {
    std::vector<stage::ParameterValues> ways;
    for (size_t i = 0; i < container_parameters(rig).size(); ++i)
        ways.push_back(values_with_container(rig, i, "smoke"));
    if (ways.empty())
        for (const stage::ParameterInfo& parameter : plugin_of(rig).parameters)
            if (parameter.kind == stage::ParameterKind::kString && parameter.max_length >= 5)
                ways.push_back({{parameter.name, std::string("smoke")}});
    if (ways.empty()) ways.emplace_back();
    return ways;
}

/// Runs the plug-in until it attaches to the model smoke. False if it does not.
bool run_until_attached(Rig& rig, const stage::ParameterValues& values) {
    add_instance(rig, rig.carrier, values);
    for (int frame = 0; frame < kFramesUntilAttached && !rig.smoke.attached; ++frame) run_frame(rig);
    return rig.smoke.attached;
}

/// A scene in which the plug-in has attached to the model smoke.
struct Attached {
    std::unique_ptr<Rig> rig;
    stage::ParameterValues values;
};

std::optional<Attached> attached_consumer(const Subject& subject) {
    size_t count = 1;
    for (size_t i = 0; i < count; ++i) {
        Attached attached{make_rig(subject), {}};
        const auto ways = ways_to_name_the_smoke(*attached.rig);
        count = ways.size();
        attached.values = ways[i];
        if (run_until_attached(*attached.rig, attached.values)) return attached;
    }
    skip("it sends no 'RAD1'");
    return std::nullopt;
}

void run_frames(Rig& rig, int frames) {
    for (int i = 0; i < frames; ++i) {
        run_frame(rig);
        draw(rig, rig.carrier);
    }
}

/// Tries other values, then restores the parameter that names the smoke.
void try_values_of_consumer(Attached& attached, int setting) {
    Rig& rig = *attached.rig;
    set_values(rig, rig.carrier, values_to_try(rig, setting), setting % 2 == 0);
    set_values(rig, rig.carrier, attached.values, setting % 2 == 0);
}

void expect_detached(const Rig& rig, const char* when) {
    if (!rig.smoke.attached) return;
    copy_text(watch().outcome->running, sizeof watch().outcome->running, "");
    fail("consumer.manners", fmt::format("stays attached {}", when),
         "send 'RAD2': the smoke waits for the consumer until then");
}

bool ask(Rig& rig, int32_t request, float* point, const char* name) {
    Reply reply;
    const int32_t none = 0;
    std::memcpy(reply.bytes.data(), &none, sizeof none);
    stage::dispatch(*rig.stage, rig.carrier, request, point, reply.bytes.data());
    if (reply.written() > sizeof(int32_t))
        fail("spawn.answers", fmt::format("{} wrote {} bytes into the reply slot", name, reply.written()),
             "an int32_t");
    int32_t answer = 0;
    std::memcpy(&answer, reply.bytes.data(), sizeof answer);
    return answer != 0;
}

/// Counts of spawn points for one set of parameter values.
struct SpawnCounts {
    int points = 0;
    int inside = 0;
};

SpawnCounts ask_for_points(Rig& rig) {
    SpawnCounts given;
    constexpr int kPoints = 60;
    const auto unset = std::nanf("");
    for (int i = 0; i < kPoints; ++i) {
        float point[5] = {unset, unset, unset, 1234.5f, 1234.5f};
        if (!ask(rig, TOVU_REQUEST_NEW_SPAWN_POINT, point, "'NEWP'")) continue;
        ++given.points;
        if (point[3] != 1234.5f || point[4] != 1234.5f)
            fail("spawn.answers", "'NEWP' wrote more than three numbers", "float[3]");
        if (!std::isfinite(point[0]) || !std::isfinite(point[1]) || !std::isfinite(point[2])) {
            fail("spawn.answers", fmt::format("'NEWP' gave the point ({}, {}, {})", point[0], point[1], point[2]),
                 "three finite numbers, or no as the answer");
            continue;
        }
        if (ask(rig, TOVU_REQUEST_IS_INSIDE, point, "'ISIN'")) ++given.inside;
    }
    float point[3] = {1.5f, -2.5f, 3.5f};
    ask(rig, TOVU_REQUEST_IS_INSIDE, point, "'ISIN'");
    if (point[0] != 1.5f || point[1] != -2.5f || point[2] != 3.5f)
        fail("spawn.answers", "'ISIN' changed the point", "read it only");
    return given;
}

}  // namespace

void check_dispatch_quiet(const Subject& subject) {
    const auto rig = make_rig(subject);
    stage::FencedMemory nowhere(64, {});
    nowhere.forbid();
    watch().regions.push_back(
        {&nowhere, "dispatch.quiet", "the data of an unknown request", "", "look at the data of known requests only"});
    add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
    send_unknown(*rig, nowhere.data());
    run_frame(*rig);
    send_unknown(*rig, nowhere.data());
    if (attach_to_subject(*rig)) {
        for (int i = 0; i < 3; ++i) run_frame(*rig);
        detach_from_subject(*rig);
        run_frame(*rig);
    }
    stage::remove_geometry(*rig->stage, rig->carrier);
    // Not after a wrong answer, since the plug-in would receive its own wrong answers.
    if (watch().outcome->finding_count == 0) try_circular_names(*rig);
}

void check_consumer_lists(const Subject& subject) {
    std::optional<Attached> attached = attached_consumer(subject);
    if (!attached) return;
    Rig& rig = *attached->rig;
    run_frames(rig, 60);
    for (int setting = 1; setting < 10; ++setting) {
        try_values_of_consumer(*attached, setting);
        run_frames(rig, 8);
        press_all_buttons(rig, rig.carrier);
    }
    stage::remove_geometry(*rig.stage, rig.carrier);
}

void check_consumer_manners(const Subject& subject) {
    std::optional<Attached> attached = attached_consumer(subject);
    if (!attached) return;
    poison_stack();
    {
        Rig& rig = *attached->rig;
        run_frames(rig, 150);
        stage::remove_geometry(*rig.stage, rig.carrier);
        expect_detached(rig, "after PLUGIN_CLEANUP_FUNCTION");
        rig.smoke.attached = false;
    }
    const auto again = [&](const char* words, auto&& act) {
        Rig& rig = *attached->rig;
        if (!run_until_attached(rig, attached->values)) return;
        watch().during = words;
        act(rig);
        stage::remove_geometry(*rig.stage, rig.carrier);
        watch().during.clear();
        rig.smoke.attached = false;
    };
    again("when it serves no smoke any more", [&](Rig& rig) {
        for (const auto& [name, value] : attached->values) {
            const auto* text = std::get_if<std::string>(&value);
            if (text && *text == "smoke") set_values(rig, rig.carrier, {{name, std::string()}}, true);
        }
        run_frames(rig, 3);
        expect_detached(rig, "although its parameter names no smoke any more");
    });
    again("while its smoke takes no requests", [&](Rig& rig) {
        rig.smoke.answers = false;
        run_frames(rig, 3);
        rig.smoke.answers = true;
    });
    again("when its smoke is gone", [&](Rig& rig) {
        remove_model_smoke(rig.smoke);
        run_frames(rig, 4);
    });
    attached->rig.reset();
    attached = attached_consumer(subject);
    if (!attached) return;
    again("when its smoke went just before", [&](Rig& rig) { remove_model_smoke(rig.smoke); });
}

void check_spawn_answers(const Subject& subject) {
    const auto rig = make_rig(subject);
    bool supplies = false;
    add_instance(*rig, rig->carrier, values_to_try(*rig, 0));
    for (int setting = 0; setting < 12; ++setting) {
        if (setting > 0) set_values(*rig, rig->carrier, values_to_try(*rig, setting), setting % 2 == 1);
        for (int frame = 0; frame < 2; ++frame) {
            run_frame(*rig);
            if (!ask(*rig, TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, nullptr, "'SPWN'")) continue;
            supplies = true;
            const SpawnCounts given = ask_for_points(*rig);
            // Only with the defaults, since tried values can leave a shape without an area.
            if (setting == 0 && given.points >= 10 && given.inside * 10 < given.points * 8)
                fail("spawn.answers",
                     fmt::format("{} of {} points that 'NEWP' gave are outside for 'ISIN'", given.points - given.inside,
                                 given.points),
                     "both in the same coordinates");
        }
    }
    stage::remove_geometry(*rig->stage, rig->carrier);
    if (!supplies) skip("it does not answer 'SPWN'");
}

}  // namespace tovu::validate
