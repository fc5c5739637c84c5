// A plug-in that checks whether its host follows docs/contract.md. It prints a report on standard output when its last
// instance is cleaned up and when its button is pressed.
//
// This file has the entry points and checks the calls, the block and its slots. scene_checks.cpp and opengl_checks.cpp
// check what the services answer, report.h lists all checks.
#include <tovu/entry_points.h>
#include <tovu/host_services.h>
#include <tovu/parameter_slots.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <set>
#include <string>

#include "opengl_checks.h"
#include "process.h"
#include "report.h"
#include "scene_checks.h"
#include "text_memory.h"

namespace probe {
namespace {

constexpr int kParameterCount = 9;
constexpr int32_t kBlockBytes = 4096;
constexpr int32_t kReportAction = 7;                      // not the position of the button
constexpr int32_t kRequest = 0x50524F42;                  // 'PROB'
constexpr const char* kWord = "Gr\u00fc\u00dfe, \u7159";  // letters of one, two and three bytes
constexpr int32_t kWordLength = 100, kAnswerLength = 400, kQuestionsLength = 20;
constexpr size_t kLongestName = 65536;  // of a container or an image; hosts choose their own limit

// The block: the slots, then bytes that only this plug-in may write.
struct Block {
    int32_t count;
    float share;
    int32_t flag;
    uint32_t word;
    int32_t choice;
    uint32_t shape;
    uint32_t picture;
    uint32_t answer;
    uint32_t questions;
    uint8_t behind[kBlockBytes - 4 * kParameterCount];
};
static_assert(sizeof(Block) == kBlockBytes);

struct TextSlot {
    int index;
    bool is_string;  // with a registered length, and room for an answer
    const char* name;
    size_t longest;  // bytes without the NUL
};
enum { kWordText, kShapeText, kPictureText, kAnswerText, kQuestionsText };
const TextSlot kTexts[] = {
    {3, true, "word", kWordLength},     {5, false, "shape", kLongestName},        {6, false, "picture", kLongestName},
    {7, true, "answer", kAnswerLength}, {8, true, "questions", kQuestionsLength},
};

// The data about an instance that is stored outside of its block.
struct Life {
    int number;
    int frames = 0;
    int32_t counter = 0;   // retrace counter of the last frame; 0 before the first
    int place = 0;         // position among the instances in that frame, from 1
    bool changed = false;  // a change since that frame
    int32_t geometry = -1;
    int32_t container = -1;
    std::array<uint32_t, kParameterCount> slots{};  // last seen values
    std::map<int, std::string> texts;               // last seen texts, by index
};

struct Process {
    const void* thread = nullptr;  // that of PLUGIN_INIT
    bool registered = false;
    int depth = 0;           // number of nested entry points
    bool has_asked = false;  // services were called with invalid handles
    bool is_asking = false;  // a request is being sent
    std::map<void*, Life> lives;
    std::set<void*> ended;  // blocks that were cleaned up
    int made = 0;
    int32_t counter = 0;    // retrace counter of the current frame
    int places = 0;         // number of instances whose PLUGIN_NEW_GEOM was called in it
    int highest_place = 0;  // the highest place of these instances in the previous frame
    bool passes = false;    // passes have begun in it
    ~Process();
} process;

// A different address in each thread.
const void* this_thread() {
    thread_local char own;
    return &own;
}

uint8_t pattern(int number, size_t i) {
    return static_cast<uint8_t>((i * 31 + static_cast<size_t>(number) * 7 + (i >> 8)) ^ 0xa5);
}

bool has_pattern(const Block& block, int number, size_t& changed_at) {
    for (changed_at = 0; changed_at < sizeof block.behind; ++changed_at)
        if (block.behind[changed_at] != pattern(number, changed_at)) return false;
    return true;
}

void fill(Block& block, int number) {
    for (size_t i = 0; i < sizeof block.behind; ++i) block.behind[i] = pattern(number, i);
}

uint32_t slot(const void* block, int index) {
    uint32_t bits;
    std::memcpy(&bits, static_cast<const uint8_t*>(block) + 4 * index, sizeof bits);
    return bits;
}

std::string check_text(const void* block, const TextSlot& text) {
    const uint32_t address = slot(block, text.index);
    if (address == 0) return "";
    const size_t readable = accessible_bytes(address, 'r', text.longest + 1);
    expect(text_readable, readable > 0, "the slot of '%s' is 0x%08x, where the process has no readable memory",
           text.name, static_cast<unsigned>(address));
    if (readable == 0) return "";
    const char* const begin = tovu_slot_text(address);
    const void* const end = std::memchr(begin, 0, readable);
    expect(text_ends, end != nullptr, "'%s' has no NUL within %zu bytes", text.name, readable);
    if (text.is_string) {
        const size_t writable = accessible_bytes(address, 'w', text.longest + 1);
        expect(text_room, writable == text.longest + 1, "%zu of the %zu bytes of '%s' are writable", writable,
               text.longest + 1, text.name);
    }
    if (end == nullptr) return "";
    std::string value(begin, static_cast<const char*>(end));
    expect(text_ends, is_utf8(value), "'%s' is not UTF-8", text.name);
    return value;
}

std::map<int, std::string> check_texts(const void* block) {
    std::map<int, std::string> values;
    for (const TextSlot& text : kTexts) values[text.index] = check_text(block, text);
    return values;
}

void check_values(const Block& block) {
    expect(slot_values, block.count >= 12000 && block.count <= 13000, "'count' is %d, registered as 12000 to 13000",
           static_cast<int>(block.count));
    expect(slot_values, block.share >= 0.25f && block.share <= 0.5f, "'share' is %g, registered as 0.25 to 0.5",
           double{block.share});
    expect(slot_values, block.choice >= 0 && block.choice <= 2, "'choice' is %d, and there are three choices",
           static_cast<int>(block.choice));
}

void remember(Life& life, const void* block) {
    for (int i = 0; i < kParameterCount; ++i) life.slots[static_cast<size_t>(i)] = slot(block, i);
    life.texts = check_texts(block);
}

void check_change(Life& life, const void* block, int32_t index) {
    const bool is_index = index >= 0 && index < kParameterCount;
    expect(change_index, is_index, "index %d of %d parameters", static_cast<int>(index), kParameterCount);
    if (!is_index) return;
    std::map<int, std::string> texts = check_texts(block);
    const auto has_changed = [&](int i) {
        return slot(block, i) != life.slots[static_cast<size_t>(i)] || texts[i] != life.texts[i];
    };
    int changed = 0, another = -1;
    for (int i = 0; i < kParameterCount; ++i) {
        if (!has_changed(i)) continue;
        ++changed;
        another = i;
    }
    // A value may be set again unchanged, and several values may be set before the first notification.
    expect(change_index, has_changed(index) || changed != 1, "index %d, and the slot that has changed is %d",
           static_cast<int>(index), another);
    life.slots[static_cast<size_t>(index)] = slot(block, index);
    life.texts[index] = texts[index];
}

// The data of the instance of an entry point call; null if the call is for no known instance.
Life* life_of(void* instance) {
    const auto found = process.lives.find(instance);
    if (found != process.lives.end()) return &found->second;
    expect(call_order, process.ended.count(instance) == 0, "the block was cleaned up before");
    if (process.ended.count(instance) != 0) return nullptr;
    size_t at = 0;
    for (const auto& [block, life] : process.lives)
        if (has_pattern(*static_cast<const Block*>(instance), life.number, at)) {
            expect(block_address, false, "the block of instance %d has moved from %p to %p", life.number, block,
                   instance);
            return nullptr;
        }
    expect(call_order, false, "PLUGIN_INIT_FUNCTION was not called for this block");
    return nullptr;
}

bool is_objects_of_another(const Life& life) {
    return std::any_of(process.lives.begin(), process.lives.end(), [&](const auto& entry) {
        const Life& other = entry.second;
        return other.number != life.number && (other.geometry == life.geometry || other.container == life.container);
    });
}

void check_objects(Life& life) {
    const int32_t geometry = _api__get_objectid_local("GEOM", TOVU_OBJECT_GEOMETRY);
    const int32_t container = _api__get_objectid_local("", TOVU_OBJECT_CONTAINER);
    const bool is_first = life.geometry == -1 && life.container == -1;
    expect(object_local, is_first || (geometry == life.geometry && container == life.container),
           "geometry and container were %d and %d and are now %d and %d", static_cast<int>(life.geometry),
           static_cast<int>(life.container), static_cast<int>(geometry), static_cast<int>(container));
    if (is_first) {
        life.geometry = geometry;
        life.container = container;
    }
    expect(object_valid, _api__object_valid(-1) == 0, "_api__object_valid(-1) is not 0");
    const bool are_some = geometry != -1 && container != -1;
    expect(object_local, are_some, "geometry %d, container %d", static_cast<int>(geometry),
           static_cast<int>(container));
    if (!are_some) return;
    expect(object_local, !is_objects_of_another(life), "geometry %d or container %d is another instance's",
           static_cast<int>(geometry), static_cast<int>(container));
    int32_t carried = -1;
    _api__container_get_geometry(container, &carried);
    expect(object_local, carried == geometry, "container %d carries geometry %d, not %d", static_cast<int>(container),
           static_cast<int>(carried), static_cast<int>(geometry));
    for (const int32_t object : {geometry, container})
        expect(object_valid, _api__object_valid(object) != 0, "_api__object_valid(%d) is 0 for this instance's own",
               static_cast<int>(object));
}

// A running entry point. The constructor makes the checks that apply to every call. `life` is null if the call is for
// no known instance.
struct Call {
    Call(const char* entry_point, void* instance, bool may_nest = false)
        : place_before(current_place()), block(static_cast<Block*>(instance)) {
        set_place({entry_point, 0, 0});
        const bool is_right_thread = this_thread() == process.thread;
        expect(call_order, process.registered, "called before PLUGIN_INIT");
        expect(call_thread, is_right_thread || !process.registered, "this thread is not that of PLUGIN_INIT");
        expect(call_nested, process.depth == 0 || (may_nest && process.is_asking) || !is_right_thread,
               "called while %s runs", place_before.entry_point);
        ++process.depth;
        if (!is_right_thread) return;
        life = life_of(instance);
        if (life == nullptr) return;
        set_place({entry_point, life->number, life->frames});
        size_t at = 0;
        expect(block_kept, has_pattern(*block, life->number, at), "byte %zu of %d has changed since the last call",
               at + offsetof(Block, behind), static_cast<int>(kBlockBytes));
        fill(*block, life->number);
        check_values(*block);
    }
    ~Call() {
        --process.depth;
        set_place(place_before);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    Place place_before;
    Block* block;
    Life* life = nullptr;
};

int32_t retrace_counter() {
    int32_t counter = 0;
    _api__pellor_get_retrace_counter(&counter);
    return counter;
}

void note_change(Life& life) {
    life.changed = life.frames > 0 && retrace_counter() == life.counter;
}

// `highest_place` detects a changed order: instances must be called in the same order as in the previous frame.
void check_frame(Life& life) {
    const int32_t counter = retrace_counter();
    double period = std::numeric_limits<double>::quiet_NaN();
    _api__pellor_get_refreshrate(&period);
    expect(frame_period, std::isfinite(period) && period > 0, "%g", period);
    expect(frame_counter, counter > 0, "%d", static_cast<int>(counter));
    expect(frame_counter, life.frames == 0 || counter != life.counter, "%d, as in the frame before",
           static_cast<int>(counter));
    const bool is_repeated = life.frames > 0 && counter == life.counter;
    if (counter != process.counter) {
        process.counter = counter;
        process.places = process.highest_place = 0;
        process.passes = false;
    }
    if (!is_repeated) {
        expect(frame_order, life.frames == 0 || !process.passes, "an instance was drawn in this frame already");
        expect(frame_order, life.place == 0 || life.place >= process.highest_place,
               "an instance that came later in the frame before came earlier in this one");
        process.highest_place = std::max(process.highest_place, life.place);
        life.place = ++process.places;
    }
    life.counter = counter;
    life.changed = false;
    ++life.frames;
    set_place({current_place().entry_point, life.number, life.frames});
}

struct Question {
    int asked;  // number of the instance that must answer
};
Question question;

// Sends a request to the next instance of this plug-in.
void ask_another(Life& life) {
    for (const auto& [block, other] : process.lives) {
        if (other.geometry == life.geometry || !_api__object_valid(other.geometry)) continue;
        question.asked = other.number;
        int32_t reply = 0;
        process.is_asking = true;
        const int32_t taken = _api__geom_dispatcher(other.geometry, kRequest, &question, &reply);
        process.is_asking = false;
        expect(dispatch_other, taken != 0 && reply == other.number,
               "the request for instance %d returned %d, and the reply is %d", other.number, static_cast<int>(taken),
               static_cast<int>(reply));
        check_objects(life);  // the objects must be those of this instance again
        return;
    }
}

Process::~Process() {
    if (!registered) return;
    set_place({"unloading", 0, 0});
    if (made > 0) expect(call_order, lives.empty(), "PLUGIN_CLEANUP_FUNCTION was not called for each instance");
    if (has_news()) print_report(nullptr, 0);
}

// A text argument in a buffer that is overwritten after each registration call.
struct PassingText {
    explicit PassingText(const char* from) { std::snprintf(text, sizeof text, "%s", from); }
    ~PassingText() { std::memset(text, '#', std::strlen(text)); }
    operator const char*() const { return text; }
    PassingText(const PassingText&) = delete;
    PassingText& operator=(const PassingText&) = delete;
    static inline char text[64];
};

}  // namespace
}  // namespace probe

using namespace probe;

int32_t PLUGIN_INIT(void) noexcept {
    static constexpr const char* kChoices[] = {"First", "Second", "Third", nullptr};
    set_place({"PLUGIN_INIT", 0, 0});
    expect(init_once, !process.registered, "called again");
    process.thread = this_thread();
    process.registered = true;
    pelRegisterPlugin("TovuProbe");
    pelRegisterPluginType(1);
    pelRegisterParameterInt("count", "Count", 12345, 12000, 13000);
    pelRegisterInfoText("info", "Checks the host. Put it on a container that is moved, turned and unevenly scaled");
    pelRegisterParameterFloat("share", "Share", 0.375f, 0.25f, 0.5f);
    pelRegisterParameterBool("flag", "Flag", 1);
    pelRegisterPushButton("report", "Report", kReportAction);
    pelRegisterParameterString("word", "Word", PassingText(kWord), 20, kWordLength, 0);
    pelRegisterParameterRadio("choice", "Choice", 1, kChoices);
    pelRegisterParameterContainer("shape", "Container with Meshes", "");
    pelRegisterParameterImage("picture", "Image", "");
    pelRegisterParameterString("answer", "Answer", "", 60, kAnswerLength, 0);
    // Not a Bool, so that hosts and tools that try all values do not enable it by chance.
    pelRegisterParameterString("questions", "Questions", "", 10, kQuestionsLength, 0);
    pelRegisterTotalSize(kBlockBytes);
    pelRegisterUseLOD(0);
    pelRegisterUseEvents(0);
    return 0;
}

void PLUGIN_INIT_FUNCTION(void* instance) noexcept {
    const bool is_new = process.lives.count(instance) == 0;
    if (is_new) {
        Life life;
        life.number = ++process.made;
        process.ended.erase(instance);
        fill(*static_cast<Block*>(instance), life.number);
        process.lives.emplace(instance, life);
    }
    const Call call("PLUGIN_INIT_FUNCTION", instance);
    expect(call_order, is_new, "called again for the same block");
    expect(block_address, reinterpret_cast<uintptr_t>(instance) % 8 == 0, "%p is not a multiple of 8", instance);
    if (call.life == nullptr) return;
    remember(*call.life, instance);
    const std::string& word = call.life->texts[kTexts[kWordText].index];
    expect(init_texts, word.empty() || word != std::string(word.size(), '#'),
           "'word' has what overwrote the plug-in's text later");
    check_objects(*call.life);
    check_look_ups();
    check_unknown_object(out_values, -1);
    check_random();
}

void PLUGIN_CLEANUP_FUNCTION(void* instance) noexcept {
    {
        const Call call("PLUGIN_CLEANUP_FUNCTION", instance);
        if (call.life == nullptr) return;
        process.lives.erase(instance);
        process.ended.insert(instance);
    }
    if (process.lives.empty()) print_report(nullptr, 0);
}

void PLUGIN_CHANGED_CALLBACK(void* instance, int32_t parameter_index) noexcept {
    const Call call("PLUGIN_CHANGED_CALLBACK", instance);
    if (call.life == nullptr) return;
    check_objects(*call.life);
    check_change(*call.life, instance, parameter_index);
    note_change(*call.life);
}

void PLUGIN_EXEC_ACTION(void* instance, int32_t action) noexcept {
    const Call call("PLUGIN_EXEC_ACTION", instance);
    if (call.life == nullptr) return;
    check_objects(*call.life);
    expect(action_number, action == kReportAction, "action %d, and the only button is %d", static_cast<int>(action),
           static_cast<int>(kReportAction));
    note_change(*call.life);
    if (action != kReportAction) return;
    char verdict[200];
    print_report(verdict, sizeof verdict);
    const uint32_t address = call.block->answer;
    if (address == 0 || accessible_bytes(address, 'w', sizeof verdict) < sizeof verdict) return;
    std::memcpy(reinterpret_cast<char*>(static_cast<uintptr_t>(address)), verdict, std::strlen(verdict) + 1);
    call.life->texts[kTexts[kAnswerText].index] = verdict;
}

uint8_t PLUGIN_NEW_GEOM(void* instance, int32_t) noexcept {
    const Call call("PLUGIN_NEW_GEOM", instance);
    if (call.life == nullptr) return 1;
    check_frame(*call.life);
    remember(*call.life, instance);
    check_objects(*call.life);
    const int32_t container = call.life->container;
    check_placement(container);
    check_camera();
    check_own_meshes(call.life->geometry);
    check_meshes(call.life->texts[kTexts[kShapeText].index]);
    check_image(call.life->texts[kTexts[kPictureText].index]);
    if (call.life->texts[kTexts[kQuestionsText].index] == "all") {
        if (!process.has_asked) check_invalid_handles();
        process.has_asked = true;
        ask_another(*call.life);
    }
    _api__container_set_bounding_box(container, 0, 0, 0, 100, 100, 100);
    _api__set_geom_changed(call.life->geometry);
    return 1;
}

uint8_t PLUGIN_RENDER_OPENGL(void* instance, int32_t render_flags, float opacity) noexcept {
    const Call call("PLUGIN_RENDER_OPENGL", instance);
    if (call.life == nullptr) return 1;
    check_objects(*call.life);
    expect(pass_opacity, opacity >= 0 && opacity <= 1, "%g", double{opacity});
    if (call.life->frames > 0) {  // a new instance may be drawn before its first frame
        const int32_t counter = retrace_counter();
        expect(frame_order, counter == call.life->counter,
               "the retrace counter is %d, and PLUGIN_NEW_GEOM came last at %d", static_cast<int>(counter),
               static_cast<int>(call.life->counter));
        expect(change_between, !call.life->changed, "a change or a button came after PLUGIN_NEW_GEOM of this frame");
        process.passes = counter == call.life->counter;
    }
    check_opengl(call.life->container);
    draw_axes((render_flags & 1) != 0, opacity);
    return 1;
}

void PLUGIN_DISPATCHER_CALLBACK(void* instance, int32_t request, void* data, void* reply) noexcept {
    const Call call("PLUGIN_DISPATCHER_CALLBACK", instance, true);
    if (call.life == nullptr) return;
    check_objects(*call.life);
    if (!process.is_asking) return;  // an unknown request of another plug-in
    const bool is_unchanged = request == kRequest && data == &question && reply != nullptr;
    expect(dispatch_other, is_unchanged && question.asked == call.life->number,
           "the request for instance %d came as 0x%08x, data and reply %s", question.asked,
           static_cast<unsigned>(request), is_unchanged ? "right" : "not as sent");
    if (is_unchanged) *static_cast<int32_t*>(reply) = call.life->number;
}
